// Adds the common options to a command.

#include "scope/options.h"

#include <algorithm>
#include <sstream>

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

void addTraceOptions(CLI::App& app, TraceOptions& options) {
    app.add_option("FILE", options.path, "a raw file, packed or not, or - for standard input")
        ->required();
    app.add_flag("--kernel-time", options.kernelTime,
                 "times are the trace clock's own, not from the first record");
    app.add_option("--names", options.names, "names of codes that no decoder knows, one a line")
        ->type_name("FILE");
    addGrowthOption(app, options.mostGrowth);
}

void addGrowthOption(CLI::App& app, uint64_t& mostGrowth) {
    app.add_option("--max-growth", mostGrowth,
                   "how many times its size a packed file may unpack to; 250 if not given, 0 for "
                   "any number")
        ->type_name("N");
}

void addOutputOptions(CLI::App& app, OutputOptions& options) {
    app.add_flag("--json", options.json, "print JSON, for programs");
    addChoice(app, "--color", "WHEN", "colours; auto has them on a terminal alone", kColorWords,
              [&](size_t when) { options.color = static_cast<ColorWhen>(when); });
    app.add_flag("--no-pager", options.noPager, "print to the terminal without a pager");
}

void addNewFileOptions(CLI::App& app, NewFileOptions& options) {
    app.add_option("-o,--output", options.path, "the file to write")->required()->type_name("NEW");
    app.add_flag("--force", options.force, "write over a file that exists");
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
