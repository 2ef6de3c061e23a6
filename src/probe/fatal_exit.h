// The program's one cleanup-and-exit path.

#pragma once

namespace sonaprobe {

// Closes the code-name and raw files, disables tracing if this program enabled it, removes the
// trace buffer, restores the audio debug flags, and ends the program: with a message (which ends in
// "\n") it goes to standard error after the program's name and the status is 1, without one the
// status is 0. A step that fails comes back here with its own message; it is not tried again, the
// steps after it are, and the newest message is the one printed.
[[noreturn]] void fatalExit(const char* message);

// The end by a signal, which verbose runs tell, or by a broken pipe.
[[noreturn]] void endBySignal(int number);

}  // namespace sonaprobe
