// The names of events, gathered once from the decoders' tables.

#include "analysis/event_names.h"

#include <map>
#include <set>

#include "analysis/event_tables.h"
#include "analysis/event_traits.h"

namespace sonaprobe {

namespace {

using AmbiguousCodes = std::set<uint32_t>;

std::string_view fullNameOf(const Decoder& decoder, const Row& row) {
    return decoder.text(row.name).view();
}

AmbiguousCodes gatherAmbiguous() {
    AmbiguousCodes ambiguous;
    std::map<std::string_view, uint32_t> codeOfName;
    forEachEvent([&](const Decoder& decoder, const Row& event, std::span<const Row> texts) {
        const auto take = [&](const Row& row) {
            const auto first = codeOfName.try_emplace(fullNameOf(decoder, row), event.code).first;
            if (first->second != event.code) ambiguous.insert({event.code, first->second});
        };
        take(event);
        for (const Row& text : texts) {
            take(text);
            if (fullNameOf(decoder, text) != fullNameOf(decoder, event)) {
                ambiguous.insert(event.code);
            }
        }
    });
    return ambiguous;
}

}  // namespace

EventName nameOf(uint32_t code) {
    static const AmbiguousCodes ambiguous = gatherAmbiguous();
    const Row* const event = eventRowOf(code);
    if (event == nullptr) return {};
    const std::string_view full = fullNameOf(*decoderOf(code), *event);
    if (full.size() <= kNameSeparator.size()) return {};  // of a class that prints nothing
    return {.full = full,
            .group = full.substr(0, event->groupLength),
            .method = full.substr(event->groupLength + kNameSeparator.size()),
            .ambiguous = ambiguous.contains(code)};
}

std::string_view driverOf(uint32_t code) {
    const EventName name = nameOf(code);
    return name.full.empty() ? "no decoder" : name.group;
}

}  // namespace sonaprobe
