// sonascope events: the reference of events, searched in the terminal.

#include <algorithm>
#include <memory>

#include "analysis/nearest.h"
#include "analysis/spelled.h"
#include "events/catalog.h"
#include "events/spelling.h"
#include "meanings/meanings.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/json.h"
#include "scope/options.h"
#include "scope/styled_line.h"

namespace sonaprobe::scope {

namespace {

using events::Text;
using events::TracedClass;

constexpr size_t kConditionWidth = 7;
constexpr size_t kTextColumn = 12;

struct Options {
    std::vector<std::string> words;
    OutputOptions output;
    bool wrap = false;
};

// An event with all that the reference says of it.
struct Entry {
    const TracedClass* traced;
    events::Event event;
};

std::string nameOf(const Text& text) {
    return std::string(text.group) + "::" + std::string(text.method);
}

std::string nameOf(const Entry& entry) {
    return std::string(entry.event.group) + "::" + std::string(entry.event.method);
}

// Everything in which words are looked for, line by line.
std::string searched(const Entry& entry) {
    std::string all = events::spellCode(entry.event.code) + "\n" + nameOf(entry) + "\n" +
                      entry.traced->title() + "\n" + entry.traced->code + "\n" +
                      entry.traced->registryName + "\n" +
                      std::string(meanings::meaningOf(entry.event.code)) + "\n";
    for (const Text& text : entry.event.texts) {
        all += nameOf(text) + "\n" + std::string(text.text) + "\n";
        for (const std::string_view value : text.values) all += std::string(value) + "\n";
    }
    return all;
}

bool fits(const Entry& entry, const std::vector<std::string>& words) {
    const std::string all = searched(entry);
    return std::ranges::all_of(words, [&](const std::string& word) {
        // A code may be written with its qualifier, as lines have it.
        const auto number = spelledNumber(word);
        if (number && word.starts_with("0x") &&
            codeOf(static_cast<uint32_t>(*number)) == entry.event.code) {
            return true;
        }
        return containsName(all, word);
    });
}

std::string conditionOf(const Text& text) {
    std::string condition = events::spellQualifiers(text.qualifiers);
    const std::string argument = events::spellCondition(text.condition);
    if (!argument.empty()) condition += ", " + argument;
    if (text.verbose) condition += ", verbose";
    return condition;
}

// What --where can ask of the event: each name once.
std::string valuesOf(const Entry& entry) {
    std::vector<std::string_view> names;
    for (const Text& text : entry.event.texts) {
        for (const std::string_view name : text.values) {
            if (std::ranges::find(names, name) == names.end()) names.push_back(name);
        }
    }
    std::string list;
    for (const std::string_view name : names)
        list += (list.empty() ? "" : ", ") + std::string(name);
    return list;
}

void print(Output& out, const Entry& entry, bool wrap) {
    StyledLine line;
    line.add(events::spellCode(entry.event.code), {Tone::dim});
    line.add("  ");
    line.add(nameOf(entry), {Tone::driver, hueOf(entry.event.code)});
    line.print(out, wrap, 0);
    line.clear();
    line.add("    " + std::string(meanings::meaningOf(entry.event.code)));
    line.print(out, wrap, 4);
    for (const Text& text : entry.event.texts) {
        line.clear();
        line.add("    ");
        line.add(conditionOf(text), {Tone::dim});
        line.add(std::string(kConditionWidth - std::min(kConditionWidth, line.columns() - 4), ' '));
        if (nameOf(text) != nameOf(entry)) line.add(" as " + nameOf(text), {Tone::dim});
        line.add(" " + escaped(text.text));
        line.print(out, wrap, kTextColumn);
    }
    if (const std::string values = valuesOf(entry); !values.empty()) {
        line.clear();
        line.add("    values  " + values, {Tone::dim});
        line.print(out, wrap, kTextColumn);
    }
}

Json jsonOf(const Entry& entry) {
    Json texts = Json::array();
    for (const Text& text : entry.event.texts) {
        texts.push_back({{"on", events::spellQualifiers(text.qualifiers)},
                         {"if", events::spellCondition(text.condition)},
                         {"verbose", text.verbose},
                         {"name", nameOf(text)},
                         {"text", text.text},
                         {"values", text.values}});
    }
    return {{"code", events::spellCode(entry.event.code)},
            {"name", nameOf(entry)},
            {"class", entry.traced->id},
            {"does", meanings::meaningOf(entry.event.code)},
            {"texts", texts}};
}

// What somebody may have meant by words that fit nothing.
Failure nothingFits(const std::vector<std::string>& words, const std::vector<Entry>& entries) {
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const Entry& entry : entries) names.emplace_back(entry.event.method);
    const std::vector<std::string_view> views(names.begin(), names.end());
    std::string given;
    for (const std::string& word : words) given += (given.empty() ? "" : " ") + word;
    return {"no event fits '" + escaped(given) + "'" + nearestPhrase(words.front(), views)};
}

Status run(const Options& options) {
    const std::vector<TracedClass> classes = events::tracedClasses();
    std::vector<Entry> entries;
    for (const TracedClass& traced : classes) {
        for (events::Event& event : events::eventsOf(traced)) {
            entries.push_back({&traced, std::move(event)});
        }
    }
    std::vector<const Entry*> found;
    for (const Entry& entry : entries) {
        if (fits(entry, options.words)) found.push_back(&entry);
    }
    if (found.empty()) throw nothingFits(options.words, entries);
    Output out(options.output);
    if (out.json()) {
        Json list = Json::array();
        for (const Entry* const entry : found) list.push_back(jsonOf(*entry));
        printJson(out, {{"schema", schemaName("events")}, {"events", list}});
    } else {
        for (const Entry* const entry : found) print(out, *entry, options.wrap);
    }
    out.finish();
    return Status::done;
}

}  // namespace

Run setUpEvents(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addOperands(app, Operand::optional, "WORDS", options->words,
                "what a code, name, text, value or the sentence of the event must hold; all words");
    addFlag(app, "--wrap", options->wrap, "wrap lines at the terminal's width, do not cut them");
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope events timed out\n"
                "  sonascope events 0x05245c0d\n"
                "  sonascope events OrvelHDAPath nodeID\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
