// The version line and the usage text.

#pragma once

namespace sonaprobe {

// On standard output.
void printVersion();

// Writes the usage text to standard error and ends the program with status 0; nothing is cleaned
// up, since nothing was touched yet.
[[noreturn]] void printUsage();

}  // namespace sonaprobe
