// The decoders as a catalogue.

#include "events/catalog.h"

#include <algorithm>

#include "events/class_table.h"
#include "events/decoders/decoders.h"
#include "registry/audio_class_registry.h"

namespace sonaprobe::events {

std::string TracedClass::title() const {
    return id + ' ' + (isSilent() ? registryName : std::string(decoder->group));
}

std::vector<TracedClass> tracedClasses() {
    std::vector<TracedClass> classes;
    for (uint32_t id = 0; id < kClassTable.size(); ++id) {
        if (kClassTable[id] == nullptr) continue;
        TracedClass traced{.id = std::to_string(id), .decoder = kClassTable[id]};
        const auto entries = AudioClassRegistry::entries();
        const auto entry = std::ranges::find(entries, id, &AudioClassRegistry::Entry::id);
        if (entry != entries.end()) {
            for (const unsigned shift : {24U, 16U, 8U, 0U}) {
                traced.code += static_cast<char>(entry->code >> shift);
            }
            traced.registryName = entry->name;
        }
        classes.push_back(traced);
    }
    classes.push_back({.id = "server", .decoder = &decoders::kAudioServer});
    return classes;
}

namespace {

std::string_view groupOf(const Decoder& decoder, const Row& row) {
    return decoder.text(row.name).view().substr(0, row.groupLength);
}

std::string_view methodOf(const Decoder& decoder, const Row& row) {
    return decoder.text(row.name).view().substr(row.groupLength + kNameSeparator.size());
}

Text textOf(const Decoder& decoder, const Row& row) {
    Text text{.qualifiers = row.qualifiers,
              .verbose = row.verbose,
              .tellsFailure = row.failure == FailureSign::words,
              .condition = row.condition,
              .group = groupOf(decoder, row),
              .method = methodOf(decoder, row),
              .text = decoder.text(row.text).view(),
              .pieces = decoder.piecesOf(row)};
    for (const Piece& piece : text.pieces) {
        if (piece.reading != Reading::nothing) text.values.push_back(decoder.nameOf(piece));
        if (piece.reading != Reading::words || piece.wordPair < text.wordPairs.size()) continue;
        const auto& [notZero, zero] = decoder.wordsOf(row, piece);
        text.wordPairs.push_back({decoder.text(notZero).view(), decoder.text(zero).view()});
    }
    return text;
}

}  // namespace

std::vector<Event> eventsOf(const TracedClass& traced) {
    std::vector<Event> events;
    if (traced.isSilent()) return events;
    for (const Row& row : traced.decoder->rows) {
        if (row.isEvent()) {
            const Decoder& decoder = *traced.decoder;
            events.push_back({row.code, groupOf(decoder, row), methodOf(decoder, row)});
        } else {
            events.back().texts.push_back(textOf(*traced.decoder, row));
        }
    }
    return events;
}

}  // namespace sonaprobe::events
