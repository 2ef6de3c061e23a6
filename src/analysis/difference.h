// In which events two traces differ by more than chance makes them.

#pragma once

#include <cstdint>
#include <vector>

#include "analysis/trace_sample.h"

namespace sonaprobe {

enum class Change : uint8_t {
    slower,
    faster,
    moreOften,
    lessOften,
    appeared,
    gone,
    failsMore,
    failsLess
};

struct Difference {
    uint32_t code;
    Change change;
    // Of which event: the median self time in nanoseconds, the rate a second, or the share of
    // failures, by the kind of change.
    double first;
    double second;
    // The share of pairs of calls in which the second trace's takes longer; 0.5 for changes of
    // other kinds.
    double superiority;
    double confidence;  // 1 less the probability of such a finding by chance, over all comparisons
    // The event's self time for each second of the trace, in nanoseconds: how much more.
    double load;
    double explains;  // its share of what all events' loads change by, up or down
};

struct TraceComparison {
    std::vector<Difference> differences;  // what explains most first
    size_t events = 0;                    // that were compared
};

// The probability of a false finding in a whole comparison.
constexpr double kFalseFindings = 0.01;

TraceComparison compareTraces(const TraceSample& first, const TraceSample& second);

}  // namespace sonaprobe
