// The options that many commands have in common, each said once.

#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "scope/command.h"
#include "scope/output.h"

namespace sonaprobe::scope {

// Where a trace comes from, and how its times and codes are shown.
struct TraceOptions {
    std::string path;
    bool kernelTime = false;
    std::string names;  // a code-name file, or empty
};

// The operand FILE, with --kernel-time and --names.
void addTraceOptions(CLI::App& app, TraceOptions& options);

// --json, --color, --no-pager.
void addOutputOptions(CLI::App& app, OutputOptions& options);

// -o NEW and --force, of commands that write a file.
struct NewFileOptions {
    std::string path;
    bool force = false;
};
void addNewFileOptions(CLI::App& app, NewFileOptions& options);

// The examples at the end of a command's help.
void addExamples(CLI::App& app, const std::string& lines);

}  // namespace sonaprobe::scope
