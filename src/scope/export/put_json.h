// JSON at a cursor, for documents that are written record by record. Texts are printable ASCII, as
// escaped() makes them.

#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "analysis/trace_clock.h"
#include "events/number_text.h"

namespace sonaprobe::scope {

namespace json_text {

// Whether a byte of eight is a quotation mark, a backslash or "<".
inline bool needsEscape(uint64_t eight) {
    constexpr uint64_t kOnes = 0x0101010101010101;
    constexpr uint64_t kHighs = 0x8080808080808080;
    const auto has = [&](char character) {
        const uint64_t other = eight ^ kOnes * static_cast<uint8_t>(character);
        return (other - kOnes) & ~other;
    };
    return ((has('"') | has('\\') | has('<')) & kHighs) != 0;
}

inline char* putCharacter(char* at, char character) {
    // A page that has the document in a script must not end there.
    if (character == '<') return putText(at, "\\u003c");
    if (character == '"' || character == '\\') *at++ = '\\';
    *at++ = character;
    return at;
}

}  // namespace json_text

// At most six characters for one, in quotation marks.
inline char* putJsonText(char* at, std::string_view text) {
    *at++ = '"';
    const char* from = text.data();
    const char* const end = from + text.size();
    while (end - from >= 8) {
        uint64_t eight;
        std::memcpy(&eight, from, sizeof eight);
        if (json_text::needsEscape(eight)) {
            for (int i = 0; i < 8; ++i) at = json_text::putCharacter(at, *from++);
        } else {
            std::memcpy(at, &eight, sizeof eight);
            at += 8;
            from += 8;
        }
    }
    while (from != end) at = json_text::putCharacter(at, *from++);
    *at++ = '"';
    return at;
}

// "0x00000000000000a5".
inline char* putJsonWord(char* at, uint64_t word) {
    at = putHexDigits(putText(at, "\"0x"), word, 16);
    *at++ = '"';
    return at;
}

// "0x05245C0C", as the reference of events spells codes.
char* putCode(char* at, uint32_t code);

// Nanoseconds as microseconds with three decimals.
char* putMicroseconds(char* at, Nanoseconds time);

}  // namespace sonaprobe::scope
