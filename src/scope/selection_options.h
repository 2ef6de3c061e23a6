// The selection on the command line, the same for all commands.

#pragma once

#include "analysis/selection.h"
#include "scope/options.h"

namespace sonaprobe::scope {

// --from, --to, --around, --driver, --method, --thread, --cpu, --object, --longer, --failed,
// --where. What they are given is checked where selectionOf() asks for it.
struct SelectionOptions {
    std::string from;
    std::string to;
    std::string around;
    std::vector<std::string> drivers;
    std::vector<std::string> methods;
    std::vector<std::string> threads;
    std::vector<std::string> cpus;
    std::vector<std::string> objects;
    std::string longer;
    bool failed = false;
    std::string where;
};

void addSelectionOptions(CLI::App& app, SelectionOptions& options);

// The selection, ready to be asked. Where calls or dropouts decide, the trace is read once for it:
// `trace.path` then names what can be read again, though it was a pipe. Throws a Failure that names
// the option and what it could have been.
Selection selectionOf(const SelectionOptions& options, TraceOptions& trace);

}  // namespace sonaprobe::scope
