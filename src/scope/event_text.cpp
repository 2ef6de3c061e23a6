// Names of events.

#include "scope/event_text.h"

#include <array>
#include <charconv>
#include <optional>

#include "analysis/event_names.h"
#include "analysis/event_tables.h"
#include "analysis/nearest.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/file_bytes.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

// What a code-name file calls the code, escaped; empty where it does not.
std::string givenName(uint32_t code, const CodeNames& names) {
    const char* const name = names.nameOf(codeOf(code));
    return name == nullptr ? std::string() : escaped(name);
}

// Of "0x05245C0C" alone.
std::optional<uint32_t> codeOfNumber(std::string_view text) {
    if (!text.starts_with("0x")) return {};
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), code, 16);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return codeOf(code);
}

}  // namespace

CodeNames readCodeNames(const std::string& path) {
    CodeNames names;
    if (path.empty()) return names;
    FileBytes file(path);
    std::array<std::byte, 1 << 14> room{};
    for (size_t got = file.read(room); got > 0; got = file.read(room)) {
        names.take(reinterpret_cast<const char*>(room.data()), got);
    }
    names.endFile();
    return names;
}

std::string eventText(uint32_t code, const CodeNames& names) {
    const EventName name = nameOf(code);
    if (name.full.empty()) {
        const std::string given = givenName(code, names);
        return given.empty() ? "code " + codeText(codeOf(code)) : given;
    }
    std::string text(name.full);
    if (name.ambiguous) text += ' ' + codeText(code);
    return text;
}

std::string eventName(const Event& event, const CodeNames& names) {
    if (event.outcome == Outcome::unknown) return eventText(event.record->debugid, names);
    std::string name(groupOf(event));
    name += kNameSeparator;
    name += methodOf(event);
    return name;
}

void addEvent(Json& entry, uint32_t code, const CodeNames& names) {
    entry["code"] = codeText(code);
    const EventName name = nameOf(code);
    if (!name.full.empty()) {
        entry["driver"] = name.group;
        entry["method"] = name.method;
    } else if (const std::string given = givenName(code, names); !given.empty()) {
        entry["name"] = given;
    }
}

std::vector<uint32_t> codesNamed(const std::string& name, const char* option) {
    if (const auto code = codeOfNumber(name)) return {*code};
    std::vector<uint32_t> codes;
    std::vector<std::string_view> all;
    forEachEvent([&](const Decoder&, const Row& event, std::span<const Row>) {
        const EventName known = nameOf(event.code);
        if (sameName(name, known.full) || sameName(name, known.method)) {
            codes.push_back(event.code);
        }
        all.push_back(known.full);
        all.push_back(known.method);
    });
    if (codes.empty()) {
        throw Failure{std::string(option) + ": no event is called '" + escaped(name) + "'" +
                      nearestPhrase(name, all)};
    }
    return codes;
}

}  // namespace sonaprobe::scope
