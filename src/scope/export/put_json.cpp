// What of JSON documents is not on the shortest way.

#include "scope/export/put_json.h"

namespace sonaprobe::scope {

template <Quotes kQuotes>
char* putJsonEscaped(char* at, std::string_view text) {
    for (const char character : text) {
        if (character == '<') {  // a page that has the document in a script must not end there
            at = putText(at, "\\u003c");
            continue;
        }
        if (character == '"' || character == '\\') *at++ = '\\';
        if (character == '"') {
            at = putQuote<kQuotes>(at);
        } else {
            *at++ = character;
        }
    }
    return at;
}
template char* putJsonEscaped<Quotes::once>(char* at, std::string_view text);
template char* putJsonEscaped<Quotes::twice>(char* at, std::string_view text);

char* putCode(char* at, uint32_t code) {
    at = putText(at, "0x");
    putHexDigits(at, code, 8);
    EightBytes digits;
    std::memcpy(&digits, at, sizeof digits);
    digits ^= (digits & kEachByte * 0x40) >> 1;  // letters become capitals
    std::memcpy(at, &digits, sizeof digits);
    return at + sizeof digits;
}

char* putMicroseconds(char* at, Nanoseconds time) {
    if (time < 0) *at++ = '-';
    const auto unsignedTime = static_cast<uint64_t>(time);
    const uint64_t size = time < 0 ? 0 - unsignedTime : unsignedTime;
    at = putUnsigned(at, size / 1000);
    *at++ = '.';
    return putThreeDigits(at, static_cast<unsigned>(size % 1000));
}

}  // namespace sonaprobe::scope
