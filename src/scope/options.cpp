// Adds the common options to a command.

#include "scope/options.h"

#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

ColorWhen colorWhen(const std::string& text) {
    if (text == "always") return ColorWhen::always;
    if (text == "never") return ColorWhen::never;
    if (text == "auto") return ColorWhen::automatic;
    throw Failure{"--color: '" + escaped(text) + "' is not always, never or auto"};
}

}  // namespace

void addTraceOptions(CLI::App& app, TraceOptions& options) {
    app.add_option("FILE", options.path, "a raw file, packed or not, or - for standard input")
        ->required();
    app.add_flag("--kernel-time", options.kernelTime,
                 "times are the trace clock's own, not from the first record");
    app.add_option("--names", options.names, "names of codes that no decoder knows, one a line")
        ->type_name("FILE");
}

void addOutputOptions(CLI::App& app, OutputOptions& options) {
    app.add_flag("--json", options.json, "print JSON, for programs");
    app.add_option_function<std::string>(
           "--color", [&](const std::string& when) { options.color = colorWhen(when); },
           "always, never or auto: on a terminal alone")
        ->type_name("WHEN");
    app.add_flag("--no-pager", options.noPager, "print to the terminal without a pager");
}

void addNewFileOptions(CLI::App& app, NewFileOptions& options) {
    app.add_option("-o,--output", options.path, "the file to write")->required()->type_name("NEW");
    app.add_flag("--force", options.force, "write over a file that exists");
}

void addExamples(CLI::App& app, const std::string& lines) { app.footer("Examples:\n" + lines); }

}  // namespace sonaprobe::scope
