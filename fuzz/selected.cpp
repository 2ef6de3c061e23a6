// Selections asked of any record: conditions that mean the same select the same records, and what a
// condition selects its contrary does not.
//
// An input is a byte for the condition, two for the event, one for the qualifier, then a record.

#include <initializer_list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "analysis/event_tables.h"
#include "analysis/selection.h"
#include "events/event.h"
#include "fuzz.h"

using namespace sonaprobe;
using fuzz::require;

namespace {

// Numbers, signed ones, words of 64 bits, texts, names of several values, and those of many events.
constexpr const char* kComparisons[] = {
    "result != 0",
    "result == 0xE00002C7",
    "result < -5",
    "pin nodeID == 21",
    "nodeID >= 3",
    "channelID == 1",
    "direction == input",
    "state > 1",
    "direction != \"output\"",
    "stream == 0",
    "sampleRate <= 48000",
    "streamID == 7",
};

Selection made(const std::string& where) {
    auto selection = Selection::make({.where = where});
    require(std::holds_alternative<Selection>(selection), "the values are known");
    return std::get<Selection>(std::move(selection));
}

struct Asked {
    Selection selection;
    Selection same;
    Selection contrary;
};

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) text += part;
    return text;
}

// Each comparison with the next one.
std::vector<Asked> allAsked() {
    constexpr std::pair<const char*, const char*> kJoints[] = {{" && ", " || "}, {" || ", " && "}};
    std::vector<Asked> all;
    for (size_t i = 0; i < std::size(kComparisons); ++i) {
        const char* const one = kComparisons[i];
        const char* const other = kComparisons[(i + 1) % std::size(kComparisons)];
        for (const auto& [joint, opposite] : kJoints) {
            const std::string contrary = joined({"!(", one, ")", opposite, "!(", other, ")"});
            all.push_back({made(joined({one, joint, other})), made(joined({"!(", contrary, ")"})),
                           made(contrary)});
        }
    }
    return all;
}

std::vector<uint32_t> codes() {
    std::vector<uint32_t> all;
    forEachEvent(
        [&](const Decoder&, const Row& event, std::span<const Row>) { all.push_back(event.code); });
    return all;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<Asked> kAsked = allAsked();
    static const std::vector<uint32_t> kCodes = codes();
    fuzz::Input input(data, size);
    const Asked& asked = kAsked[input.number<uint8_t>() % kAsked.size()];
    const uint32_t code = kCodes[input.number<uint16_t>() % kCodes.size()];
    const uint32_t qualifier = input.number<uint8_t>() & 3;
    auto record = input.number<TraceRecord>();
    record.debugid = code | qualifier;
    const bool selected = asked.selection.contains(record, 1, 1000);
    require(asked.same.contains(record, 1, 1000) == selected,
            "what means the same selects the same");
    require(!selected || !asked.contrary.contains(record, 1, 1000),
            "a condition and its contrary select no record both");
    return 0;
}
