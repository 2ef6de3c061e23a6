// JSON at a cursor, for documents that are written record by record. Texts are printable ASCII, as
// escaped() makes them.

#pragma once

#include <cstdint>
#include <string_view>

#include "analysis/trace_clock.h"
#include "events/number_text.h"
#include "scope/byte_scan.h"

namespace sonaprobe::scope {

char* putJsonEscaped(char* at, std::string_view text);

// In quotation marks; at most six characters for one.
inline char* putJsonText(char* at, std::string_view text) {
    *at++ = '"';
    if (text.empty()) {  // of which there may be no address to copy from
        *at++ = '"';
        return at;
    }
    const bool plain = !containsAny(text, [](EightBytes bytes) {
        return areEqual(bytes, '"') | areEqual(bytes, '\\') | areEqual(bytes, '<');
    });
    at = plain ? putText(at, text) : putJsonEscaped(at, text);
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
