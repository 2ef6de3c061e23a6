// The values of a record as one JSON object, by name.

#pragma once

#include "scope/export/event_words.h"
#include "scope/export/put_json.h"

namespace sonaprobe::scope {

inline char* putJsonValues(char* at, const Event& event, EventWords& words,
                           uint64_t ticksPerMicrosecond) {
    *at++ = '{';
    bool first = true;
    for (const Piece& piece : piecesOf(event)) {
        if (piece.reading == Reading::nothing) continue;
        if (!first) *at++ = ',';
        first = false;
        const Value value = valueOf(event, piece);
        at = putJsonText(at, value.name);
        *at++ = ':';
        switch (formOf(value)) {
            case ValueForm::number: at = putSigned(at, static_cast<int64_t>(value.word)); break;
            case ValueForm::word: at = putJsonWord(at, value.word); break;
            case ValueForm::decimalText:
            case ValueForm::text:
                at = putJsonText(at, words.textOf(event, piece, ticksPerMicrosecond));
                break;
        }
    }
    *at++ = '}';
    return at;
}

}  // namespace sonaprobe::scope
