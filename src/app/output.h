// Standard output's failures.

#pragma once

namespace sonaprobe {

// To be told of every write to standard output that failed, with errno as the write left it. What
// the C library still held is gone by then. When the program is ending, or nobody reads any more,
// standard output is turned to /dev/null, so that no later line is glued to half a line.
void outputFailed();

// Flushes all output streams.
void flushOutput();

}  // namespace sonaprobe
