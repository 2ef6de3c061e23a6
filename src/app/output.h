// What is written to standard output and standard error, and its failures.

#pragma once

#include <cstdio>

namespace sonaprobe {

// printf to standard output or standard error for all that is no event line.
[[gnu::format(printf, 2, 3)]] void printMessage(std::FILE* stream, const char* format, ...);

// To be told of every write to one of the two that failed, with errno as the write left it. What
// the C library still held is gone by then. When the program is ending, or nobody reads any more,
// the stream is turned to /dev/null, so that no later line waits again or is glued to half a line.
void outputFailed(std::FILE* stream);

// Flushes all output streams.
void flushOutput();

}  // namespace sonaprobe
