// What is written to standard output and standard error, event lines and messages, and its
// failures.

#pragma once

#include <cstdio>

#include "lines/line_printer.h"

namespace sonaprobe {

// The line that goes to standard output, and the printer of the program's lines on it, which takes
// its options from the settings when it is asked for first.
OutputLine& outputLine();
LinePrinter& linePrinter();

// printf to standard output or standard error for all that is no event line.
[[gnu::format(printf, 2, 3)]] void printMessage(std::FILE* stream, const char* format, ...);

// To be told of every write to one of the two that failed, with errno as the write left it. What
// the C library still held is gone by then. When the program is ending, or nobody reads any more,
// the stream is turned to /dev/null, so that no later line waits again. Else the next line begins
// on a line of its own, whatever the failure has cut.
void outputFailed(std::FILE* stream);

// Turns standard output or standard error, by its descriptor, to /dev/null unless it is a file,
// which takes what it is given. Safe in a signal handler.
void giveUpStream(int descriptor);

// A descriptor of /dev/null or, in a root without it, of something else that takes no bytes.
int openNowhere();

// Flushes all output streams.
void flushOutput();

}  // namespace sonaprobe
