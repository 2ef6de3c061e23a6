// What a trace's dropouts come to: several with one culprit are one finding. And what its I/O is
// like where nothing is wrong.

#pragma once

#include <optional>
#include <vector>

#include "analysis/dropout_causes.h"

namespace sonaprobe {

// Dropouts with the same cause, done by the same event of the same thread.
struct DropoutFinding {
    std::vector<size_t> dropouts;  // the one told with most certainty first
    Nanoseconds lacking = 0;       // of all together, as far as it is known
    Nanoseconds mostLacking = 0;
};

// The finding with most dropouts first.
std::vector<DropoutFinding> findingsOf(const std::vector<Dropout>& dropouts);

// An I/O thread's cycles.
struct IoSummary {
    uint64_t thread = 0;  // its id
    uint64_t cycles = 0;
    uint64_t healthy = 0;
    uint64_t nearMisses = 0;
    uint64_t overloaded = 0;
    Nanoseconds clockShift = 0;

    // Of the healthy cycles, where there are any.
    Nanoseconds budget = 0;  // the median
    Nanoseconds p50 = 0;     // from due to end
    Nanoseconds p99 = 0;
    Nanoseconds longest = 0;
    Nanoseconds margin = 0;  // the least time left to the deadline

    // The near miss that was latest after its deadline.
    std::optional<uint64_t> worstNearMiss{};  // slot of its end
    Nanoseconds worstLateness = 0;
};

std::vector<IoSummary> summariesOf(const std::vector<TimedThread>& threads);

}  // namespace sonaprobe
