// What the layouts of one printer share: its options, and what goes on from line to line.

#pragma once

#include <cstdint>

#include "lines/event_time.h"
#include "lines/indentation.h"
#include "lines/line_options.h"
#include "lines/name_lookup.h"
#include "lines/output_line.h"

namespace sonaprobe {

struct LineState {
    LineOptions options;
    OutputLine& line;
    NameLookup names;
    double ticksPerMicrosecond = 1000.0;
    Indentation indentation{};
    EventTime time{};
    // Of --basic: 0 while none is held, so a first stamp of 0 is not held.
    uint64_t firstTimestamp = 0;
    uint64_t previousTimestamp = 0;
};

}  // namespace sonaprobe
