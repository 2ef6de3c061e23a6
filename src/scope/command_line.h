// The command line as a whole: all commands with their options.

#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>

#include "scope/command.h"

namespace sonaprobe::scope {

struct CommandLine {
    std::unique_ptr<CLI::App> app;
    // By the order of commands(): what each does.
    std::vector<Run> runs;
};

CommandLine makeCommandLine();

}  // namespace sonaprobe::scope
