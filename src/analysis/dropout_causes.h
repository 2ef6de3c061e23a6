// Why the sound broke off: for each dropout of a trace its cause, who did it, and the records that
// prove it.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/io_cycles.h"
#include "analysis/io_timing.h"

namespace sonaprobe {

enum class DropoutCause : uint8_t {
    client,
    driverCall,
    blockedBy,
    preempted,
    lateWake,
    clock,
    engineChange,
    lostRecords,
    unknown,
};

// By cause.
constexpr std::array<std::string_view, 9> kDropoutCauses = {
    "client", "driver-call",   "blocked-by",   "preempted", "late-wake",
    "clock",  "engine-change", "lost-records", "unknown"};

// Shown: the records leave no other reading. Likely: nothing else fits as well. Possible: an
// overlap, or one of several candidates.
enum class Certainty : uint8_t { shown, likely, possible };
constexpr std::array<std::string_view, 3> kCertainties = {"shown", "likely", "possible"};

// What is to blame, as far as there is such a thing; a first slot after a gap has no code.
struct Culprit {
    uint64_t slot = 0;
    std::optional<uint32_t> code{};
    uint64_t thread = 0;  // its id
    uint32_t cpu = 0;
};

struct Verdict {
    DropoutCause cause = DropoutCause::unknown;
    Certainty certainty = Certainty::possible;
    std::optional<Culprit> culprit{};
    double share = 0;                  // of the lacking time, 0 to 1
    bool carried = false;              // from the cycle before
    std::vector<uint64_t> evidence{};  // slots, ascending
};

struct Dropout {
    uint64_t slot = 0;
    Nanoseconds time = 0;
    uint64_t thread = 0;  // its id
    std::optional<Nanoseconds> budget{};
    std::optional<Nanoseconds> lacking{};
    Verdict verdict{};
};

// What a trace's I/O came to. Moved but not copied: threads point into the trace.
struct IoAnswer {
    IoAnswer() = default;
    IoAnswer(IoAnswer&&) = default;
    IoAnswer& operator=(IoAnswer&&) = default;

    IoTrace io{};
    std::vector<TimedThread> threads{};
    std::vector<Dropout> dropouts{};  // in the order of the file
};

// Times the threads of an observed trace and judges its dropouts.
IoAnswer judgeIo(IoTrace io);

}  // namespace sonaprobe
