// Calls, as they open, and how they end.

#pragma once

#include <cstdint>

#include "analysis/tick_rate.h"
#include "record/trace_record.h"

namespace sonaprobe {

// Where in a trace something happened.
struct Moment {
    Nanoseconds time = 0;
    uint64_t slot = 0;
    uint32_t thread = 0;  // the clock's number
};

enum class CallEnd : uint8_t {
    finished,    // by its end record
    cutOff,      // by an end around it, a restart, a start that does not recurse, the clock
    unfinished,  // by the end of the file
};

struct Call {
    Nanoseconds start = 0;
    Nanoseconds inside = 0;  // the time of the calls directly inside, so far
    uint64_t startSlot = 0;
    uint64_t object = 0;  // 0 where the code has none
    uint32_t code = 0;
    uint32_t cpu = 0;     // where it started
    uint32_t thread = 0;  // the clock's number
    uint32_t depth = 0;   // 0 outermost
    uint32_t tag = 0;     // whatever the sink gave it
};

// How and when a call ended.
struct Closing {
    CallEnd how{};
    Nanoseconds time = 0;
    uint64_t slot =
        0;  // of the record or divisor that ended it; the number of slots where none did
    const TraceRecord* end = nullptr;  // the end record of a finished call

    Nanoseconds lengthOf(const Call& call) const { return saturatedDifference(time, call.start); }
    Nanoseconds selfOf(const Call& call) const { return lengthOf(call) - call.inside; }
};

}  // namespace sonaprobe
