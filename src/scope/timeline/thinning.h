// Which records a page leaves out where its trace has more than a page should hold: short calls
// that share a moment with a longer one.

#pragma once

#include <vector>

#include "scope/timeline/io_observing.h"
#include "scope/timeline/survey.h"

namespace sonaprobe::scope::timeline {

// Of the calls of a thread and depth that begin in the same stretch of time and are shorter than
// it, the longest is kept, with all that is inside; of points outside them the first. The others
// are merged with it. Kept are also failures, calls that were cut off, the longest call of each
// event, the evidence of dropouts, and all that is near a dropout.
struct Thinning {
    Nanoseconds stretch = 1;  // they begin at its multiples
    uint64_t merged = 0;      // records
    uint64_t kept = 0;
    std::vector<bool> isMerged{};  // by slot; empty where all are kept

    // Slots that came since the trace was looked at are kept.
    bool merges(uint64_t slot) const { return slot < isMerged.size() && isMerged[slot]; }
};

// Nothing is merged where no more records are shown than `most`. Otherwise the trace is read, as a
// rule once, with stretches as short as `most` allows; more records stay where longer ones would
// leave nothing to be seen.
Thinning thinned(const TraceOptions& trace, const Survey& survey, IoObserving& io, uint64_t most);

}  // namespace sonaprobe::scope::timeline
