// The options that many commands have in common, each said once, and the kinds of options that
// there are.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "scope/byte_source.h"
#include "scope/command.h"
#include "scope/output.h"

namespace sonaprobe::scope {

// Where a trace comes from, and how its times and codes are shown.
struct TraceOptions {
    std::string path;
    std::string copyOf;  // where the path is one: what the user gave
    bool kernelTime = false;
    std::string names;  // a code-name file, or empty
    uint64_t mostGrowth = ByteSource::kMostGrowth;
};

// The operand FILE, with --kernel-time, --names and --max-growth.
void addTraceOptions(CLI::App& app, TraceOptions& options);

// --max-growth, of commands that read packed files; see ByteSource.
void addGrowthOption(CLI::App& app, uint64_t& mostGrowth);

// --json, --color, --no-pager.
void addOutputOptions(CLI::App& app, OutputOptions& options);

// -o NEW and --force, of commands that write a file.
struct NewFileOptions {
    std::string path;
    bool force = false;
};
void addNewFileOptions(CLI::App& app, NewFileOptions& options);

CLI::Option* addFlag(CLI::App& app, const char* names, bool& value, const char* help);
CLI::Option* addFlag(CLI::App& app, const char* names, const std::function<void()>& set,
                     const char* help);

// An option with one value: a std::string, uint32_t, size_t, double or std::optional<size_t>.
// `type` is the value's name in the help.
template <typename Value>
CLI::Option* addValue(CLI::App& app, const char* names, const char* type, Value& value,
                      const char* help);

// An option that may stand several times, each time with one value: the next word may be the file.
CLI::Option* addValues(CLI::App& app, const char* names, const char* type,
                       std::vector<std::string>& values, const char* help);

// An operand, or as many as there are.
enum class Operand { required, optional };
void addOperand(CLI::App& app, Operand kind, const char* name, std::string& value,
                const char* help);
void addOperands(CLI::App& app, Operand kind, const char* name, std::vector<std::string>& values,
                 const char* help);

// Adds an option, or an operand, whose value is one of these words; `choose` is told which. Any
// other word is refused. Help and completion have the words from here.
CLI::Option* addChoice(CLI::App& app, const char* name, const char* type, const char* help,
                       const std::vector<std::string>& words,
                       const std::function<void(size_t)>& choose);

// The command line has to have the option.
CLI::Option* require(CLI::Option* option);

// The option stands below this heading in the help.
CLI::Option* putBelow(const char* heading, CLI::Option* option);

// The option is refused without the other one.
CLI::Option* letNeed(CLI::Option* option, CLI::Option* other);

// The words of an option that addChoice() added; none of others.
std::vector<std::string> wordsOf(CLI::Option& option);

// The examples at the end of a command's help.
void addExamples(CLI::App& app, const std::string& lines);

}  // namespace sonaprobe::scope
