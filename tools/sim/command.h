// The subcommands of sonaprobe-sim: one file each in commands/, one row each in main.cpp.

#pragma once

#include <span>

namespace sonaprobe::sim {

// What follows the subcommand's name on the command line.
using Arguments = std::span<char* const>;

// A subcommand ends with the program's exit status, 0 or 1, and has then said why.
struct Command {
    const char* name;
    const char* operands;  // as the help shows them
    const char* summary;   // a line of the help
    int (*run)(Arguments arguments);
};

int runFail(Arguments arguments);
int runHold(Arguments arguments);
int runPlay(Arguments arguments);
int runPost(Arguments arguments);
int runReset(Arguments arguments);
int runScenarios(Arguments arguments);
int runStatus(Arguments arguments);
int runWrite(Arguments arguments);
int runWriteDropouts(Arguments arguments);  // of write

}  // namespace sonaprobe::sim
