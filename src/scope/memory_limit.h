// A bound on the program's own memory, so that a trace made to take all of it ends with a message
// and not with the machine's other programs.

#pragma once

namespace sonaprobe::scope {

// Three quarters of the machine's memory, beyond what is in use now; a lower bound of the user's
// stays. Memory beyond it throws std::bad_alloc.
void limitMemory();

// Takes the bound away again, for a program that is started.
void liftMemoryLimit();

}  // namespace sonaprobe::scope
