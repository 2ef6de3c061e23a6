// The table of commands.

#include "scope/command.h"

namespace sonaprobe::scope {

namespace {

constexpr Command kCommands[] = {
    {"info", "what is in a file, and is it sound", setUpInfo},
    {"lines", "print the records as lines", setUpLines},
    {"stats", "where the time goes: calls and their times", setUpStats},
    {"tree", "who calls whom, with counts and times", setUpTree},
    {"diff", "what changed from one trace to another", setUpDiff},
    {"why", "name the cause of each dropout", setUpWhy},
    {"catch", "keep the seconds around an event of the live trace", setUpCatch},
    {"export", "write a trace as data for other tools", setUpExport},
    {"cut", "keep a part of a trace as a file of its own", setUpCut},
    {"repair", "write a file anew without what is broken", setUpRepair},
    {"events", "search the reference of events", setUpEvents},
    {"completion", "print the completion of a shell", setUpCompletion},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace sonaprobe::scope
