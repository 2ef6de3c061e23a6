// The first reading of a trace for its page: how long it is, which records are shown, and what its
// I/O came to.

#pragma once

#include <string>
#include <vector>

#include "analysis/dropout_causes.h"
#include "analysis/selection.h"
#include "scope/options.h"

namespace sonaprobe::scope::timeline {

struct Survey {
    uint64_t records = 0;  // shown
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    // By slot: whether its record is shown; empty where all are. With a call's start its end is
    // shown too, and the other way round.
    std::vector<bool> shown{};
    IoTrace io{};
    std::vector<TimedThread> timed{};
    std::vector<Dropout> dropouts{};
    bool assumedDivisor = false;

    bool shows(uint64_t slot) const { return shown.empty() || shown[slot]; }
};

// Throws a Failure where no record is selected.
void survey(const TraceOptions& trace, const Selection& selection, Survey& survey);

}  // namespace sonaprobe::scope::timeline
