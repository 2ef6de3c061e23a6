// Tells a format what is in a trace: its records, its calls, and where they stand among each other.

#pragma once

#include "scope/export/format.h"
#include "scope/input.h"
#include "scope/options.h"

namespace sonaprobe {
class Selection;
}

namespace sonaprobe::scope {

// Reads the whole input. Without calls records alone are told, faster. Memory grows with the calls
// that are open at once and with threads. Says on standard error what is wrong with the input.
void feed(Input& input, const Selection& selection, const TraceOptions& trace, bool withCalls,
          Format& format);

// The same before it, for formats that are told twice: of a trace that is read from its beginning.
void feedAhead(const Selection& selection, const TraceOptions& trace, Format& format);

}  // namespace sonaprobe::scope
