// The text of a record and its values, as JSON.

#pragma once

#include "scope/export/event_words.h"
#include "scope/export/put_json.h"

namespace sonaprobe::scope {

// Of an event that has a text: whether it, its values and their names are JSON as they are.
inline bool isPlainJson(const Event& event) { return (event.text->holds & ~kHoldsComma) == 0; }

// The event's text, which may be empty.
inline char* putJsonText(char* at, const Event& event, EventWords& words,
                         uint64_t ticksPerMicrosecond) {
    if (event.text == nullptr || !isPlainJson(event)) {
        return putJsonText(at, words.textOf(event, ticksPerMicrosecond));
    }
    at = putQuote<Quotes::once>(at);
    at = putLogText(at, event, static_cast<double>(ticksPerMicrosecond));
    return putQuote<Quotes::once>(at);
}

// The values as one object, by name.
template <Quotes kQuotes = Quotes::once>
char* putJsonValues(char* at, const Event& event, EventWords& words, uint64_t ticksPerMicrosecond) {
    const bool isPlain = event.text != nullptr && isPlainJson(event);
    const auto ticks = static_cast<double>(ticksPerMicrosecond);
    *at++ = '{';
    bool first = true;
    for (const Piece& piece : piecesOf(event)) {
        if (piece.reading == Reading::nothing) continue;
        if (!first) *at++ = ',';
        first = false;
        const Value value = valueOf(event, piece);
        at = isPlain ? putQuote<kQuotes>(putText(putQuote<kQuotes>(at), value.name))
                     : putJsonText<kQuotes>(at, value.name);
        *at++ = ':';
        switch (formOf(value)) {
            case ValueForm::number: at = putSigned(at, static_cast<int64_t>(value.word)); break;
            case ValueForm::word: at = putJsonWord<kQuotes>(at, value.word); break;
            case ValueForm::decimalText:
            case ValueForm::text:
                if (isPlain) {
                    at = putValue(putQuote<kQuotes>(at), event, piece, ticks);
                    at = putQuote<kQuotes>(at);
                } else {
                    at = putJsonText<kQuotes>(at, words.textOf(event, piece, ticksPerMicrosecond));
                }
                break;
        }
    }
    *at++ = '}';
    return at;
}

}  // namespace sonaprobe::scope
