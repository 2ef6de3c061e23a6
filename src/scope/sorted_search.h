// --sorted: a search for --from and --to in a file of which the user says that its time never steps
// back, instead of a look at each record. Whether that is so cannot be told without reading all.

#pragma once

#include "analysis/selection.h"
#include "scope/input.h"
#include "scope/options.h"

namespace sonaprobe::scope {

// Has the input give its first slots and those in which the selection's time lies, up to a second
// before and after; all of it where there is nothing to search for, or to search in, as in a pipe.
void searchTime(Input& input, const Selection& selection, const TraceOptions& trace);

// At the end. Throws a Failure where what was read of a part of the file shows that its time steps
// back, or that a divisor takes over from another.
void confirmSorted(const Input& input, const TraceClock& clock);

}  // namespace sonaprobe::scope
