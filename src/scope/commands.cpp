// The table of commands.

#include "scope/command.h"

namespace sonaprobe::scope {

namespace {

constexpr Command kCommands[] = {
    {"lines", "print the records as lines", setUpLines},
};

}  // namespace

std::span<const Command> commands() { return kCommands; }

}  // namespace sonaprobe::scope
