// The commands of sonascope: one file each in commands/, one row each in the table of commands.cpp.

#pragma once

#include <functional>
#include <span>

#include "scope/status.h"

// CLI11's header takes longer to compile than most of our files: options.h is enough for most.
namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace sonaprobe::scope {

// What a command does once its options are read.
using Run = std::function<Status()>;

struct Command {
    const char* name;
    const char* summary;          // a line of the list of commands
    Run (*setUp)(CLI::App& app);  // adds the command's own options and operands
};

// In the order in which the help lists them.
std::span<const Command> commands();

Run setUpCatch(CLI::App& app);
Run setUpCompletion(CLI::App& app);
Run setUpCut(CLI::App& app);
Run setUpEvents(CLI::App& app);
Run setUpExport(CLI::App& app);
Run setUpInfo(CLI::App& app);
Run setUpLines(CLI::App& app);
Run setUpRepair(CLI::App& app);
Run setUpStats(CLI::App& app);
Run setUpTree(CLI::App& app);
Run setUpDiff(CLI::App& app);
Run setUpWhy(CLI::App& app);
Run setUpTimeline(CLI::App& app);

}  // namespace sonaprobe::scope
