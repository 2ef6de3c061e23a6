// Who kept an I/O thread waiting: calls of other threads that cover its silence, and work on its
// processor.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "analysis/io_cycles.h"
#include "analysis/io_timing.h"

namespace sonaprobe {

// A stretch of an owner's time without records of the I/O thread.
struct Silence {
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    uint64_t slotBefore = 0;  // the thread's last record
    uint64_t slotAfter = 0;   // its next one, where it goes on
    uint32_t cpuAfter = 0;

    Nanoseconds length() const { return end - begin; }
};

struct Holder {
    SeenCall outer;    // the call that covers the silence
    SeenCall culprit;  // the innermost call with most of it
    Nanoseconds covered = 0;
    bool byStep = false;  // a step in the outer call ends in time, the call goes on
    std::optional<SeenCall> engineChange{};  // the outermost call around or in it that is one
    std::vector<uint64_t> evidence{};        // slots
};

// Calls of other threads that may have held what the thread waited for, the best one first. What is
// left of the silence has to be what its owner takes as a rule.
std::vector<Holder> findHolders(const Scene& scene, const Silence& silence, const Usual& usual,
                                uint32_t ioThread);

// Engine changes of other threads that overlap a stretch, the one with most of it first.
std::vector<SeenCall> engineChangesIn(const Scene& scene, Nanoseconds begin, Nanoseconds end,
                                      uint32_t ioThread);

// The work of other threads on a processor in a stretch of time.
struct BusyProcessor {
    std::optional<SeenCall> firstCall{};  // there, of the busiest thread
    uint64_t firstSlot = 0;               // of that thread's first record there
    uint32_t firstCode = 0;
    uint32_t thread = 0;
    uint32_t cpu = 0;
    Nanoseconds shown = 0;   // covered by records close to each other
    Nanoseconds called = 0;  // covered by those, and by calls however long
    size_t records = 0;
};

BusyProcessor workOn(const Scene& scene, const Silence& silence, uint32_t ioThread);

}  // namespace sonaprobe
