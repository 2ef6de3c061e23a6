// Reads the command line's own tables for completion.

#include "scope/shell_words.h"

#include <algorithm>

#include "analysis/selection.h"
#include "registry/audio_class_registry.h"
#include "scope/command_line.h"
#include "scope/options.h"

namespace sonaprobe::scope {

namespace {

// Names that every shell takes as they are.
bool isOneWord(std::string_view name) {
    return std::ranges::all_of(name, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               c == '_';
    });
}

std::vector<std::string> classNames() {
    std::vector<std::string> names;
    for (const AudioClassRegistry::Entry& entry : AudioClassRegistry::entries()) {
        names.emplace_back(entry.name);
    }
    return names;
}

OptionWords optionWords(CLI::Option& option) {
    OptionWords words{.names = {}, .help = option.get_description(), .value = {}};
    for (const std::string& name : option.get_lnames()) words.names.push_back("--" + name);
    for (const std::string& name : option.get_snames()) words.names.push_back("-" + name);
    if (option.get_items_expected_max() > 0) {
        words.value = {option.get_type_name(), wordsOf(option)};
    }
    return words;
}

}  // namespace

std::vector<CommandWords> commandWords() {
    const CommandLine line = makeCommandLine();
    std::vector<CommandWords> all;
    for (const Command& command : commands()) {
        CommandWords words{
            .name = command.name, .help = command.summary, .options = {}, .operands = {}};
        for (CLI::Option* const option : line.app->get_subcommand(command.name)->get_options()) {
            if (option->get_positional()) {
                words.operands.push_back({option->get_name(), wordsOf(*option)});
            } else {
                words.options.push_back(optionWords(*option));
            }
        }
        all.push_back(std::move(words));
    }
    return all;
}

bool isPath(const std::string& kind) { return kind == "FILE" || kind == "OTHER" || kind == "NEW"; }

std::vector<std::string> wordsOfKind(const std::string& kind) {
    if (kind == "CLASS") return classNames();
    std::vector<std::string> words;
    if (kind == "DRIVER") words = driverNames();
    if (kind == "METHOD" || kind == "EVENT") words = methodNames();
    std::erase_if(words, [](const std::string& word) { return !isOneWord(word); });
    return words;
}

}  // namespace sonaprobe::scope
