// sonascope: answers from a raw trace file, for anybody.

#include <algorithm>
#include <fcntl.h>
#include <new>
#include <unistd.h>

#include "analysis/nearest.h"
#include "scope/command_line.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/memory_limit.h"

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

// A standard stream that is closed must not become a data file's descriptor.
void fillStandardDescriptors() {
    int file;
    do {
        file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    } while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) close(file);
}

// CLI11 takes a mistyped command for an operand.
void checkCommand(const char* given) {
    if (given == nullptr || *given == '-') return;
    std::vector<std::string_view> names;
    for (const Command& command : commands()) names.emplace_back(command.name);
    if (std::ranges::find(names, given) != names.end()) return;
    throw Failure{"there is no command '" + escaped(given) + "'" + nearestPhrase(given, names) +
                  "; see sonascope --help"};
}

// What an option that there is not may have meant to be.
std::string nearestOptions(const CLI::App& app) {
    const CLI::App* const chosen = app.get_subcommands().empty() ? &app : app.get_subcommands()[0];
    const std::vector<std::string> left = chosen->remaining();
    const auto given = std::ranges::find_if(
        left, [](const std::string& argument) { return argument.starts_with("--"); });
    if (given == left.end()) return {};
    std::vector<std::string> names;
    for (const CLI::Option* const option : chosen->get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    const std::vector<std::string_view> views(names.begin(), names.end());
    return nearestPhrase(given->substr(0, given->find('=')), views);
}

// CLI11's message of a mistake, in our words where its own do not say what is wrong.
std::string messageOf(const CLI::Error& error) {
    const std::string message = escaped(error.what());
    constexpr std::string_view kNoConversion = "Could not convert: ";  // "--top = x"
    const size_t equals = message.find(" = ");
    if (message.starts_with(kNoConversion) && equals != std::string::npos) {
        return message.substr(kNoConversion.size(), equals - kNoConversion.size()) + ": '" +
               message.substr(equals + 3) + "' is no number that fits";
    }
    return message == "A subcommand is required" ? "a command is missing" : message;
}

Status run(int argc, char** argv) {
    fillStandardDescriptors();
    limitMemory();
    CommandLine line = makeCommandLine();
    try {
        checkCommand(argc > 1 ? argv[1] : nullptr);
        line.app->parse(argc, argv);
        return runCommand(line);
    } catch (const CLI::Success& request) {  // --help
        line.app->exit(request);
        return Status::done;
    } catch (const CLI::ExtrasError& error) {
        warn(escaped(error.what()) + nearestOptions(*line.app) + "; see " + nameOf(*line.app) +
             " --help");
    } catch (const CLI::Error& error) {
        warn(messageOf(error) + "; see " + nameOf(*line.app) + " --help");
    } catch (const Failure& failure) {
        if (!failure.message.empty()) warn(failure.message);
        return failure.status;
    } catch (const std::bad_alloc&) {
        warn("out of memory; a part of the trace may fit, see --from and --to");
    }
    return Status::trouble;
}

}  // namespace

}  // namespace sonaprobe::scope

int main(int argc, char** argv) { return static_cast<int>(sonaprobe::scope::run(argc, argv)); }
