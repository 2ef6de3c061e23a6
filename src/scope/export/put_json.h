// JSON at a cursor, for documents that are written record by record. Texts are printable ASCII, as
// escaped() makes them.

#pragma once

#include <cstdint>
#include <string_view>

#include "analysis/trace_clock.h"
#include "events/number_text.h"
#include "scope/byte_scan.h"

namespace sonaprobe::scope {

// How quotation marks are written: as JSON has them, or twice, where the document is itself a text
// in quotation marks that are written so.
enum class Quotes : uint8_t { once, twice };

template <Quotes kQuotes>
char* putQuote(char* at) {
    constexpr size_t kLength = kQuotes == Quotes::once ? 1 : 2;
    std::memset(at, '"', kLength);
    return at + kLength;
}

template <Quotes kQuotes>
char* putJsonEscaped(char* at, std::string_view text);

// In quotation marks; at most six characters for one.
template <Quotes kQuotes = Quotes::once>
char* putJsonText(char* at, std::string_view text) {
    at = putQuote<kQuotes>(at);
    if (!text.empty()) {  // else there may be no address to copy from
        const bool plain = !containsAny(text, [](EightBytes bytes) {
            return areEqual(bytes, '"') | areEqual(bytes, '\\') | areEqual(bytes, '<');
        });
        at = plain ? putText(at, text) : putJsonEscaped<kQuotes>(at, text);
    }
    return putQuote<kQuotes>(at);
}

// "0x00000000000000a5".
template <Quotes kQuotes = Quotes::once>
char* putJsonWord(char* at, uint64_t word) {
    at = putText(putQuote<kQuotes>(at), "0x");
    return putQuote<kQuotes>(putHexDigits(at, word, 16));
}

// "0x05245C0C", as the reference of events spells codes.
char* putCode(char* at, uint32_t code);

// Nanoseconds as microseconds with three decimals.
char* putMicroseconds(char* at, Nanoseconds time);

}  // namespace sonaprobe::scope
