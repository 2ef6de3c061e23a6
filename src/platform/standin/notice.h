// What the stand-in itself says on standard error, for the calls that it stands in for have no
// words: each at most once a process.

#pragma once

#include <sys/types.h>

namespace sonaprobe::standin {

// A file of the facility is not to be trusted, and why.
void tellRefusal(const char* path, const char* reason);

// A mapped file has lost its length.
void tellCutShort(const char* path);

// A process holds the facility's operations up; 0: one out of sight.
void tellHolder(pid_t holder);

}  // namespace sonaprobe::standin
