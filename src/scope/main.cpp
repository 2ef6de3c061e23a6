// sonascope: answers from a raw trace file, for anybody.

#include <cstdio>
#include <iostream>
#include <new>

#include "scope/command_line.h"
#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// The command that the line names, for messages: "sonascope lines".
std::string nameOf(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app.get_name() : app.get_name() + " " + chosen.front()->get_name();
}

Status runCommand(CommandLine& line) {
    const CLI::App* const chosen = line.app->get_subcommands().front();
    for (size_t i = 0; i < line.runs.size(); ++i) {
        if (chosen->get_name() == commands()[i].name) return line.runs[i]();
    }
    return Status::trouble;
}

Status run(int argc, char** argv) {
    CommandLine line = makeCommandLine();
    try {
        line.app->parse(argc, argv);
        return runCommand(line);
    } catch (const CLI::Success& request) {  // --help
        line.app->exit(request);
        return Status::done;
    } catch (const CLI::Error& error) {
        warn(escaped(error.what()) + "; see " + nameOf(*line.app) + " --help");
    } catch (const Failure& failure) {
        if (!failure.message.empty()) warn(failure.message);
        return failure.status;
    } catch (const std::bad_alloc&) {
        warn("out of memory");
    }
    return Status::trouble;
}

}  // namespace

}  // namespace sonaprobe::scope

int main(int argc, char** argv) { return static_cast<int>(sonaprobe::scope::run(argc, argv)); }
