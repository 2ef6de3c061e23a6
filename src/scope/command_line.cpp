// Builds the command line from the table of commands.

#include "scope/command_line.h"

namespace sonaprobe::scope {

CommandLine makeCommandLine() {
    CommandLine line{std::make_unique<CLI::App>("sonascope: answers from a raw trace file"), {}};
    CLI::App& app = *line.app;
    app.name("sonascope");
    app.set_version_flag("--version", std::string("sonascope ") + SONAPROBE_VERSION);
    app.require_subcommand(1);
    app.get_formatter()->column_width(26);
    app.footer("sonascope COMMAND --help tells a command's options.");
    for (const Command& command : commands()) {
        CLI::App* const own = app.add_subcommand(command.name, command.summary);
        line.runs.push_back(command.setUp(*own));
    }
    return line;
}

}  // namespace sonaprobe::scope
