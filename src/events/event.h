// What a record means: its decoder, its event, the text that answers it, and the text's values.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "events/argument.h"
#include "events/class_table.h"
#include "events/decoder.h"
#include "record/trace_record.h"

namespace sonaprobe {

enum class Outcome : uint8_t {
    text,     // a text answers
    gated,    // a text answers, which lines have under --verbose alone
    silent,   // the event is known, and none of its texts answers
    unknown,  // no decoder knows the event
};

// Points into the record and into the decoder tables. Of an unknown event `event` and `text` are
// null, of a silent one `text`; `decoder` is null where the record's class has none.
struct Event {
    const TraceRecord* record;
    const Decoder* decoder;
    const Row* event;
    const Row* text;
    Outcome outcome;
};

// What a value is and how its text reads it.
struct Value {
    std::string_view name;  // unique in its text
    Reading reading;
    uint8_t bits;   // of the argument word that it takes: 8, 32 or 64
    uint64_t word;  // sign-extended where the reading is of signed numbers
};

// Selects, and gates nothing: options of a line do that. Takes any record; `decoder` is what
// decoderOf() says of its debug id.
inline Event decode(const TraceRecord& record, const Decoder* decoder) {
    const size_t rowAfterEvent =
        decoder == nullptr ? 0 : decoder->rowAfterEvent[eventNumberOf(record.debugid)];
    if (rowAfterEvent == 0) return {&record, decoder, nullptr, nullptr, Outcome::unknown};

    const Row* const event = &decoder->rows[rowAfterEvent - 1];
    const Row* const end = decoder->rows.data() + decoder->rows.size();
    const unsigned qualifier = 1U << static_cast<unsigned>(qualifierOf(record.debugid));
    for (const Row* row = event + 1; row != end && !row->isEvent(); ++row) {
        if ((row->qualifiers & qualifier) == 0 || !holds(row->condition, record)) continue;
        return {&record, decoder, event, row, row->verbose ? Outcome::gated : Outcome::text};
    }
    return {&record, decoder, event, nullptr, Outcome::silent};
}
inline Event decode(const TraceRecord& record) { return decode(record, decoderOf(record.debugid)); }

// Whether records of the debug id may have other outcomes than decode() has for one of them.
bool outcomeHangsOnArguments(uint32_t debugid);

// The names that the record's line has: its text's own, else its event's. Empty for an unknown
// event.
std::string_view groupOf(const Event& event);
std::string_view methodOf(const Event& event);

// The pieces of the text that answers, those of literal words alone too; none without a text.
inline std::span<const Piece> piecesOf(const Event& event) {
    if (event.text == nullptr) return {};
    return event.decoder->piecesOf(*event.text);
}

// The value of one of the event's pieces, which is not literal words alone.
inline Value valueOf(const Event& event, const Piece& piece) {
    return {.name = event.decoder->nameOf(piece),
            .reading = piece.reading,
            .bits = static_cast<uint8_t>(piece.slice.bits()),
            .word = argumentOf(*event.record, piece.slice, piece.signExtend)};
}

// Whether a result among the event's values is not 0.
bool hasFailedResult(const Event& event);

// Whether the text that answers tells of a failure: by a result that is not 0, or in its words.
inline bool isFailure(const Event& event) {
    if (event.text == nullptr || event.text->failure == FailureSign::none) return false;
    return event.text->failure == FailureSign::words || hasFailedResult(event);
}

}  // namespace sonaprobe
