// Reads one printf conversion of a LOG text. The checks of the row vocabulary and the pieces that
// the interpreter prints both come from this one reader, so they cannot drift apart.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace sonaprobe {

enum class ConversionKind : uint8_t {
    unknown,
    signedDecimal,    // %d
    unsignedDecimal,  // %u
    hexadecimal,      // %x
    pointer,          // %p
    character,        // %c
    string,           // %s
    real,             // %f
};

struct Conversion {
    ConversionKind kind = ConversionKind::unknown;
    bool wide = false;       // "ll": the whole 64-bit word
    bool zeroFill = false;   // "0"
    bool alternate = false;  // "#"
    uint8_t width = 0;
    uint8_t length = 0;  // characters of the text, the "%" included
};

constexpr unsigned kMaxFieldWidth = 32;

// The conversion that starts at text[0] == '%'; of kind unknown where LOG texts have none such.
constexpr Conversion readConversion(std::string_view text) {
    const auto at = [&](size_t i) { return i < text.size() ? text[i] : '\0'; };
    Conversion result;
    size_t i = 1;
    for (; at(i) == '#' || at(i) == '0'; ++i) {
        (at(i) == '#' ? result.alternate : result.zeroFill) = true;
    }
    unsigned width = 0;
    for (; at(i) >= '0' && at(i) <= '9' && width <= kMaxFieldWidth; ++i) {
        width = width * 10 + static_cast<unsigned>(at(i) - '0');
    }
    if (width > kMaxFieldWidth) return result;
    result.width = static_cast<uint8_t>(width);
    if (at(i) == 'l' && at(i + 1) == 'l') {
        result.wide = true;
        i += 2;
    }
    const bool bare = i == 1;
    switch (at(i)) {
        case 'd': result.kind = ConversionKind::signedDecimal; break;
        case 'u': result.kind = ConversionKind::unsignedDecimal; break;
        case 'x': result.kind = ConversionKind::hexadecimal; break;
        case 'p': result.kind = ConversionKind::pointer; break;
        case 'c': result.kind = ConversionKind::character; break;
        case 's': result.kind = ConversionKind::string; break;
        case 'f': result.kind = ConversionKind::real; break;
        default: break;
    }
    const bool number = result.kind <= ConversionKind::hexadecimal;
    const bool meaningless =
        (!number && !bare) || (result.alternate && result.kind != ConversionKind::hexadecimal) ||
        (result.alternate && result.zeroFill) || (result.zeroFill && result.width == 0);
    if (meaningless) result.kind = ConversionKind::unknown;
    result.length = static_cast<uint8_t>(i + 1);
    return result;
}

}  // namespace sonaprobe
