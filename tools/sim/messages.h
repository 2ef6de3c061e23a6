// What sonaprobe-sim says on standard error.

#pragma once

namespace sonaprobe::sim {

// "sonaprobe-sim: ", the text in printf's way, a line end.
[[gnu::format(printf, 1, 2)]] void complain(const char* format, ...);

// Says that an action ("read the state") failed with an errno of the facility, why, and what may
// be done about it. Returns the exit status, 1.
int facilityFailure(const char* action, int error);

}  // namespace sonaprobe::sim
