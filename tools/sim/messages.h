// What sonaprobe-sim says of failures, and of records that it has posted.

#pragma once

#include <cstdint>

namespace sonaprobe::sim {

// "sonaprobe-sim: ", the text in printf's way, a line end.
[[gnu::format(printf, 1, 2)]] void complain(const char* format, ...);

// Prints how many records were logged, and tells a person who watches why it was none.
void printLogged(uint64_t logged, uint64_t posted);

// Says that an action ("read the state") failed with an errno of the facility, why, and what may
// be done about it. Returns the exit status, 1.
int facilityFailure(const char* action, int error);

}  // namespace sonaprobe::sim
