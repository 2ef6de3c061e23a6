// Escaping for terminals.

#include "scope/escape.h"

#include "scope/byte_scan.h"

namespace sonaprobe::scope {

namespace {

constexpr bool isPlain(char character) { return character >= ' ' && character <= '~'; }

void putEscaped(std::string& out, char character) {
    constexpr char kDigits[] = "0123456789abcdef";
    switch (character) {
        case '\n': out += "\\n"; return;
        case '\t': out += "\\t"; return;
        case '\r': out += "\\r"; return;
        default: break;
    }
    const auto byte = static_cast<unsigned char>(character);
    out += "\\x";
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
}

}  // namespace

bool isPrintable(std::string_view text) {
    constexpr EightBytes kHighest = kEachByte << 7;
    return !containsAny(text, [](EightBytes bytes) {
        const EightBytes belowBlank = (bytes - kEachByte * ' ') & ~bytes;
        return ((belowBlank | bytes) & kHighest) | areEqual(bytes, '\x7f');
    });
}

std::string escaped(std::string_view text) {
    if (isPrintable(text)) return std::string(text);
    std::string out;
    for (const char character : text) {
        if (isPlain(character)) {
            out += character;
        } else {
            putEscaped(out, character);
        }
    }
    return out;
}

}  // namespace sonaprobe::scope
