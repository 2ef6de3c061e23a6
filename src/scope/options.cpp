// Adds the common options to a command.

#include "scope/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <sstream>
#include <type_traits>

namespace sonaprobe::scope {

namespace {

// By ColorWhen.
const std::vector<std::string> kColorWords{"auto", "always", "never"};

std::string joined(const std::vector<std::string>& words, const char* between) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

}  // namespace

CLI::Option* addFlag(CLI::App& app, const char* names, bool& value, const char* help) {
    return app.add_flag(names, value, help);
}

CLI::Option* addFlag(CLI::App& app, const char* names, const std::function<void()>& set,
                     const char* help) {
    return app.add_flag_function(
        names, [set](int64_t) { set(); }, help);
}

template <typename Value>
CLI::Option* addValue(CLI::App& app, const char* names, const char* type, Value& value,
                      const char* help) {
    CLI::Option* const option = app.add_option(names, value, help)->type_name(type);
    // To CLI11, too small a number is a very large one.
    if constexpr (std::is_same_v<Value, size_t> || std::is_same_v<Value, std::optional<size_t>>) {
        option->check(CLI::Validator(
            [](std::string& given) {
                return given.starts_with('-') ? "'" + given + "' is no number that fits" : "";
            },
            ""));
    }
    return option;
}
template CLI::Option* addValue(CLI::App&, const char*, const char*, std::string&, const char*);
template CLI::Option* addValue(CLI::App&, const char*, const char*, uint32_t&, const char*);
template CLI::Option* addValue(CLI::App&, const char*, const char*, size_t&, const char*);
template CLI::Option* addValue(CLI::App&, const char*, const char*, double&, const char*);
template CLI::Option* addValue(CLI::App&, const char*, const char*, std::optional<size_t>&,
                               const char*);

CLI::Option* addValues(CLI::App& app, const char* names, const char* type,
                       std::vector<std::string>& values, const char* help) {
    return app.add_option(names, values, help)
        ->type_name(type)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addOperand(CLI::App& app, Operand kind, const char* name, std::string& value,
                const char* help) {
    app.add_option(name, value, help)->required(kind == Operand::required);
}

void addOperands(CLI::App& app, Operand kind, const char* name, std::vector<std::string>& values,
                 const char* help) {
    app.add_option(name, values, help)->required(kind == Operand::required);
}

void addTraceOptions(CLI::App& app, TraceOptions& options) {
    addOperand(app, Operand::required, "FILE", options.path,
               "a raw file, packed or not, or - for standard input");
    addFlag(app, "--kernel-time", options.kernelTime,
            "times are the trace clock's own, not from the first record");
    addValue(app, "--names", "FILE", options.names,
             "names of codes that no decoder knows, one a line");
    addGrowthOption(app, options.mostGrowth);
}

void addGrowthOption(CLI::App& app, uint64_t& mostGrowth) {
    addValue(app, "--max-growth", "N", mostGrowth,
             "how many times its size a packed file may unpack to; 250 if not given, 0 for any "
             "number");
}

void addOutputOptions(CLI::App& app, OutputOptions& options) {
    addFlag(app, "--json", options.json, "print JSON, for programs");
    addChoice(app, "--color", "WHEN", "colours; auto has them on a terminal alone", kColorWords,
              [&](size_t when) { options.color = static_cast<ColorWhen>(when); });
    addFlag(app, "--no-pager", options.noPager, "print to the terminal without a pager");
}

void addNewFileOptions(CLI::App& app, NewFileOptions& options) {
    app.add_option("-o,--output", options.path, "the file to write")->required()->type_name("NEW");
    addFlag(app, "--force", options.force, "write over a file that exists");
}

CLI::Option* addChoice(CLI::App& app, const char* name, const char* type, const char* help,
                       const std::vector<std::string>& words,
                       const std::function<void(size_t)>& choose) {
    const auto indexOf = [words](const std::string& given) {
        return static_cast<size_t>(std::ranges::find(words, given) - words.begin());
    };
    const auto check = [words, indexOf](std::string& given) {
        if (indexOf(given) < words.size()) return std::string();
        return "'" + given + "' is none of " + joined(words, ", ");
    };
    return app
        .add_option_function<std::string>(
            name, [=](const std::string& given) { choose(indexOf(given)); },
            std::string(help) + ": " + joined(words, ", "))
        ->type_name(type)
        // Unlike its description, the check's name does not show in the help.
        ->check(CLI::Validator(check, "", joined(words, " ")));
}

CLI::Option* require(CLI::Option* option) { return option->required(); }

CLI::Option* putBelow(const char* heading, CLI::Option* option) { return option->group(heading); }

CLI::Option* letNeed(CLI::Option* option, CLI::Option* other) { return option->needs(other); }

std::vector<std::string> wordsOf(CLI::Option& option) {
    std::vector<std::string> words;
    try {
        std::istringstream name(option.get_validator(0)->get_name());
        for (std::string word; name >> word;) words.push_back(word);
    } catch (const CLI::OptionNotFound&) {
        // It has no check.
    }
    return words;
}

void addExamples(CLI::App& app, const std::string& lines) { app.footer("Examples:\n" + lines); }

}  // namespace sonaprobe::scope
