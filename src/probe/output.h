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

// printf to standard output or standard error for all that is no event line, up to kMessageRoom
// bytes on standard output. What standard output is to get before openOutput() waits for that, or
// for the end of the program, unless it is a terminal.
constexpr size_t kMessageRoom = 1024;
[[gnu::format(printf, 2, 3)]] void printMessage(std::FILE* stream, const char* format, ...);

// Once the settings are known: from now on messages go out at once. Lines go out in large pieces
// where nobody watches them come.
void openOutput();

// Hands over what standard output is still to get.
void flushOutput();

}  // namespace sonaprobe
