// lines for people and, with --json, for programs: when, after what, on which thread, inside which
// calls, what, and how long it took.

#pragma once

#include "analysis/selection.h"
#include "scope/input.h"
#include "scope/options.h"
#include "scope/output.h"

namespace sonaprobe::scope {

// Finishes the output, and then tells what is wrong with the input. Throws a Failure.
void printLines(Input& input, const Selection& selection, const TraceOptions& trace, bool wrap,
                Output& out);

}  // namespace sonaprobe::scope
