// The command line as completion sees it: commands, options, and what an option's value may be.

#pragma once

#include <span>
#include <string>
#include <vector>

namespace sonaprobe::scope {

// What an option's value or an operand may be.
struct ValueWords {
    std::string kind;                  // "TIME"; empty where there is none
    std::vector<std::string> choices;  // empty where it may be anything of its kind
};

struct OptionWords {
    std::vector<std::string> names;  // "--from", "-o"
    std::string help;
    ValueWords value;
};

struct CommandWords {
    std::string name;
    std::string help;
    std::vector<OptionWords> options;
    std::vector<ValueWords> operands;
};

// Of the real command line, in the order of its help.
std::vector<CommandWords> commandWords();

// The words that values of a kind may be whatever the option: "DRIVER", "METHOD". None where they
// may be anything.
std::vector<std::string> wordsOfKind(const std::string& kind);

// Whether it is a path: "FILE", "OTHER", "NEW".
bool isPath(const std::string& kind);

// The completion of a shell.
std::string bashCompletion(std::span<const CommandWords> commands);
std::string zshCompletion(std::span<const CommandWords> commands);
std::string fishCompletion(std::span<const CommandWords> commands);

}  // namespace sonaprobe::scope
