// The table of commands.

#include "scope/command.h"

namespace sonaprobe::scope {

namespace {

constexpr Command kCommands[] = {
    {"lines", "print the records as lines", setUpLines},
    {"why", "name the cause of each dropout", setUpWhy},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace sonaprobe::scope
