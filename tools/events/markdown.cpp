// The reference of all events, docs/events.md: an introduction, an index, one table per class.

#include "events/markdown.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "events/catalog.h"
#include "events/spelling.h"
#include "meanings/meanings.h"

namespace sonaprobe::events {

namespace {

constexpr const char* kIntroduction = R"(# Events

Every event that sonaprobe decodes, and every text that it can print for it. This page is made from
the tables in `src/events/decoders/` by `script/update-generated`; change the tables, not the page.

## How to find an event

Search this page for what a line shows: its name as printed (`OrvelHDAPath::enable`), some fixed
words of its text (`going to D0`), or its code (`0x05245C0C`). What `-c` prints is the code with the
qualifier in its two lowest bits: for `0x05245c0d` search for `0x05245C0C`, without regard to case.

## How to read a table

Above each table stands what its methods do in the driver, one sentence each.

Each row is one text. The texts of an event are asked from the first to the last, and the first whose
qualifier and condition match is printed; a record that matches none prints nothing.

| Column | Says |
|---|---|
| Code | the debug id without its qualifier |
| On | the qualifier: **start** is 1, marked `->` in the line; **end** is 2, marked `<-`; **other** is 0 and 3; **any** is all four |
| If | what an argument must be besides; *verbose*: printed only under `-v`; *failure*: its words tell that something failed |
| Name | group and method, as the line shows them |
| Text | the printf format of the LOG text |
| Values | what fills its conversions, in order: the name of each value, as `sonascope --where` takes it, and its argument |

`arg2` is a whole argument word of 64 bits, `hi(arg2)` and `lo(arg2)` are its halves, `byte(0, arg2)`
is its lowest byte. `arg1` is the object of the line and `arg5` its thread, and few texts show them.

| Argument | Prints |
|---|---|
| `boolean(x)` | `true`, or `false` for 0 |
| `yesNo(x)` | `yes`, or `no` for 0 |
| `either(x, "a", "b")` | `a`, or `b` for 0 |
| `nanos(x)` | a time in nanoseconds as seconds.milliseconds.microseconds.nanoseconds |
| `seconds(x, y)` | the whole seconds from trace clock stamp x to y |
| `ticks(x)` | x / 24.0 |
| `fourCC(x)` | four characters, the highest byte first |
| `character(x)` | one character |

Fields that a public standard explains are [further down](#fields-of-public-standards).

## Classes

"Code" is what `-F` and `-X` take besides the class number and the name. Events of the silent classes
are known and never printed. An audio code that is not on this page is printed raw, marked `F-`.

| Class | Code | Name | Events | Texts |
|---|---|---|---|---|
)";

// In a table a vertical bar would end its cell, even within code; a tab would not be seen.
std::string inCode(std::string_view text) {
    std::string result = "`";
    for (const char c : text) {
        if (c == '|') result += '\\';
        if (c == '\t') {
            result += "\\t";
        } else {
            result += c;
        }
    }
    return result + '`';
}

std::string inCodeIfAny(std::string_view text) { return text.empty() ? "" : inCode(text); }

std::string classCell(const TracedClass& traced) {
    if (traced.isSilent()) return traced.id + " *silent*";
    std::string anchor = traced.title();
    std::ranges::transform(anchor, anchor.begin(), [](char c) {
        if (c == ' ') return '-';
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return '[' + traced.title() + "](#" + anchor + ')';
}

void printIndex(const std::vector<TracedClass>& classes) {
    size_t allEvents = 0;
    size_t allTexts = 0;
    for (const TracedClass& traced : classes) {
        const std::vector<Event> events = eventsOf(traced);
        size_t texts = 0;
        for (const Event& event : events) texts += event.texts.size();
        std::printf("| %s | %s | %s | %zu | %zu |\n", classCell(traced).c_str(),
                    inCodeIfAny(traced.code).c_str(), inCodeIfAny(traced.registryName).c_str(),
                    events.size(), texts);
        allEvents += events.size();
        allTexts += texts;
    }
    std::printf("| all | | | %zu | %zu |\n", allEvents, allTexts);
}

std::string ifCell(const Text& text) {
    std::string cell = inCodeIfAny(spellCondition(text.condition));
    if (text.verbose) cell += cell.empty() ? "*verbose*" : ", *verbose*";
    if (text.tellsFailure) cell += cell.empty() ? "*failure*" : ", *failure*";
    return cell;
}

std::string valuesCell(const Text& text) {
    std::string cell;
    auto name = text.values.begin();
    for (const Piece& piece : text.pieces) {
        if (piece.reading == Reading::nothing) continue;
        if (!cell.empty()) cell += ", ";
        cell += inCode(*name++) + " = " + inCode(spellArgument(text, piece));
    }
    return cell;
}

void printRow(const Event& event, const Text& text) {
    const std::string name = std::string(text.group) + "::" + std::string(text.method);
    std::printf("| %s | %s | %s | %s | %s | %s |\n", inCode(spellCode(event.code)).c_str(),
                spellQualifiers(text.qualifiers).c_str(), ifCell(text).c_str(),
                inCode(name).c_str(), inCode(text.text).c_str(), valuesCell(text).c_str());
}

void printFields() {
    std::puts(
        "\n## Fields of public standards\n\n"
        "The number is the standard's chapter. What is named after a field of the driver's own\n"
        "(`fCurrentPowerState`, say) is as the driver holds it, and no standard says more.");
    for (const meanings::FieldGroup& group : meanings::fieldGroups()) {
        std::printf("\n### %s\n\n%s.\n\n| Field | Means | Chapter |\n|---|---|---|\n",
                    std::string(group.title).c_str(), std::string(group.standard).c_str());
        for (const meanings::Field& field : group.fields) {
            std::printf("| %s | %s | %s |\n", inCode(field.name).c_str(),
                        std::string(field.means).c_str(), std::string(field.source).c_str());
        }
    }
}

void printSentence(const Event& event) {
    std::printf("- %s %s: %s\n", inCode(spellCode(event.code)).c_str(),
                inCode(event.method).c_str(), std::string(meanings::meaningOf(event.code)).c_str());
}

void printClass(const TracedClass& traced) {
    const std::vector<Event> events = eventsOf(traced);
    if (events.empty()) return;
    std::printf("\n## %s\n\n", traced.title().c_str());
    if (traced.decoder->gate == Gate::historic) {
        std::puts("No option of sonaprobe prints these.\n");
    }
    if (traced.decoder->gate == Gate::audioServer) {
        std::puts("Printed under `-A` only. These lines show no object: `arg1` is a value.\n");
    }
    for (const Event& event : events) printSentence(event);
    std::puts("\n| Code | On | If | Name | Text | Values |\n|---|---|---|---|---|---|");
    for (const Event& event : events) {
        for (const Text& text : event.texts) printRow(event, text);
    }
}

}  // namespace

void printMarkdown() {
    const std::vector<TracedClass> classes = tracedClasses();
    std::fputs(kIntroduction, stdout);
    printIndex(classes);
    printFields();
    for (const TracedClass& traced : classes) printClass(traced);
}

}  // namespace sonaprobe::events
