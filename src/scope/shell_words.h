// The command line as completion sees it: commands, options, and what an option's value may be.

#pragma once

#include <span>
#include <string>
#include <vector>

namespace sonaprobe::scope {

struct OptionWords {
    std::vector<std::string> names;  // "--from", "-o"
    std::string help;
    std::string value;  // "TIME", or empty where the option takes none
};

struct CommandWords {
    std::string name;
    std::string help;
    std::vector<OptionWords> options;
    std::vector<std::string> operands;  // "FILE"
};

// Of the real command line, in the order of its help.
std::vector<CommandWords> commandWords();

// The words that a value or operand of this kind may be: "WHEN", "SHELL", "NAME" of a driver. None
// where it may be anything.
std::vector<std::string> wordsOfKind(const std::string& kind);

// Whether it is a path: "FILE", "OTHER", "NEW".
bool isPath(const std::string& kind);

// The completion of a shell.
std::string bashCompletion(std::span<const CommandWords> commands);
std::string zshCompletion(std::span<const CommandWords> commands);
std::string fishCompletion(std::span<const CommandWords> commands);

}  // namespace sonaprobe::scope
