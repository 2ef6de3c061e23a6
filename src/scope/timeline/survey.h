// The first reading of a trace for its page: how long it is, and which records are shown.

#pragma once

#include <array>
#include <vector>

#include "analysis/selection.h"
#include "analysis/trace_clock.h"

namespace sonaprobe::scope {
struct TraceOptions;
}

namespace sonaprobe::scope::timeline {

struct Survey {
    uint64_t records = 0;  // shown
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    // By slot: whether its record is shown; empty where all are. With a call's start its end is
    // shown too, and the other way round.
    std::vector<bool> shown{};
    // By n: how often a thread's record begins another stretch of 2^n ns, at their multiples.
    std::array<uint64_t, 64> stretches{};

    bool shows(uint64_t slot) const {
        return shown.empty() || (slot < shown.size() && shown[slot]);
    }
};

// Throws a Failure where no record is selected.
Survey survey(const TraceOptions& trace, const Selection& selection);

}  // namespace sonaprobe::scope::timeline
