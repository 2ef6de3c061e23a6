// Whether the sentences and fields of the reference fit the decoder tables.

#include "events/meaning_check.h"

#include <algorithm>

#include "events/spelling.h"

namespace sonaprobe::events {

namespace {

std::string faultOfSentences(const std::vector<uint32_t>& codes,
                             std::span<const std::span<const meanings::Meaning>> tables) {
    auto code = codes.begin();
    for (const auto table : tables) {
        for (const meanings::Meaning& row : table) {
            const std::string spelled = spellCode(row.code);
            if (code == codes.end() || row.code < *code) {
                return spelled + ": no event has this code, or its sentence is out of order";
            }
            if (row.code > *code) return spellCode(*code) + ": the event has no sentence";
            if (!row.sentence.ends_with('.')) return spelled + ": the sentence has no full stop";
            ++code;
        }
    }
    return code == codes.end() ? "" : spellCode(*code) + ": the event has no sentence";
}

std::string faultOfFields(const std::vector<std::string_view>& values,
                          std::span<const meanings::FieldGroup> groups) {
    for (const meanings::FieldGroup& group : groups) {
        for (const meanings::Field& field : group.fields) {
            if (std::ranges::find(values, field.name) == values.end()) {
                return std::string(field.name) + ": no text has a value of this name";
            }
        }
    }
    return "";
}

}  // namespace

Told told(const std::vector<TracedClass>& classes) {
    Told result;
    for (const TracedClass& traced : classes) {
        for (const Event& event : eventsOf(traced)) {
            result.codes.push_back(event.code);
            for (const Text& text : event.texts) {
                result.values.insert(result.values.end(), text.values.begin(), text.values.end());
            }
        }
    }
    return result;
}

std::string faultOf(const Told& told, std::span<const std::span<const meanings::Meaning>> sentences,
                    std::span<const meanings::FieldGroup> fields) {
    const std::string fault = faultOfSentences(told.codes, sentences);
    return fault.empty() ? faultOfFields(told.values, fields) : fault;
}

}  // namespace sonaprobe::events
