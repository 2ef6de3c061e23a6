// A trace that is read twice, though it may come through a pipe.

#pragma once

#include "scope/options.h"

namespace sonaprobe::scope {

// Makes the path one that gives the same bytes each time it is opened while the program runs: of a
// pipe, that of a copy without a name in the folder for temporary files. Throws a Failure.
void makeRepeatable(TraceOptions& trace);

}  // namespace sonaprobe::scope
