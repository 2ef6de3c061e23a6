// The command line.

#pragma once

namespace sonaprobe {

// Fills the settings from the command line, in its order: a message appears only if --verbose
// stands before the option that causes it. Prints usage, version and class list as they are asked
// for; a zero buffer size and a path too long are fatal.
void parseOptions(int argc, char** argv);

}  // namespace sonaprobe
