// The two layouts for records that no decoder prints: unclassified lines, and --basic.

#pragma once

#include "lines/line_state.h"
#include "record/trace_record.h"

namespace sonaprobe {

// An audio code without decoder row ("F-"), or, under --all and --decode, a code of another kind
// ("U-", or by its name). One line, or none for other codes otherwise.
void printUnclassifiedRecord(LineState& state, const TraceRecord& record);

// The --basic layout: elapsed and delta microseconds, code or name, the raw words. One line.
void printBasicRecord(LineState& state, const TraceRecord& record);

}  // namespace sonaprobe
