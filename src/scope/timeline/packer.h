// The last reading of a trace for its page: its records in blocks, its calls in a pyramid, and
// the head that the first picture is drawn from.

#pragma once

#include <string>
#include <vector>

#include "scope/timeline/io_observing.h"
#include "scope/timeline/survey.h"
#include "scope/timeline/thinning.h"

namespace sonaprobe::scope::timeline {

// Chunks of a page, as its characters, in the order in which the page has them.
struct PackedTrace {
    std::string head;
    std::vector<std::string> levels;  // the coarsest first
    std::string longBars;
    std::string cycles;
    std::vector<std::string> blocks;
};

// Memory grows with the page, threads and open calls, not with the trace. Throws a Failure.
PackedTrace pack(const TraceOptions& trace, const std::string& title, const Survey& survey,
                 const Thinning& thinning, IoObserving& io);

}  // namespace sonaprobe::scope::timeline
