// Finds events by their names.

#include "scope/event_lookup.h"

#include <charconv>
#include <optional>

#include "analysis/event_names.h"
#include "analysis/event_tables.h"
#include "analysis/nearest.h"
#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// Of "0x05245C0C" alone.
std::optional<uint32_t> codeOfNumber(std::string_view text) {
    if (!text.starts_with("0x")) return {};
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), code, 16);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return codeOf(code);
}

}  // namespace

std::vector<uint32_t> codesNamed(const std::string& name, const char* option) {
    if (const auto code = codeOfNumber(name)) return {*code};
    std::vector<uint32_t> codes;
    std::vector<std::string_view> names;
    forEachEvent([&](const Decoder&, const Row& event, std::span<const Row>) {
        const EventName known = nameOf(event.code);
        if (sameName(name, known.full) || sameName(name, known.method)) {
            codes.push_back(event.code);
        }
        names.push_back(known.full);
        names.push_back(known.method);
    });
    if (codes.empty()) {
        throw Failure{std::string(option) + ": no event is called '" + escaped(name) + "'" +
                      nearestPhrase(name, names)};
    }
    return codes;
}

}  // namespace sonaprobe::scope
