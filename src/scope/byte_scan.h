// Looks for bytes of a kind in a text, eight at a time.

#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace sonaprobe::scope {

// A kind of bytes: given eight bytes, the highest bit of the first of its kind among them is set,
// and none where there is no such byte.
using EightBytes = uint64_t;
constexpr EightBytes kEachByte = 0x0101010101010101;

constexpr EightBytes areEqual(EightBytes bytes, char character) {
    const EightBytes other = bytes ^ kEachByte * static_cast<uint8_t>(character);
    return (other - kEachByte) & ~other & kEachByte << 7;
}

// Whether kind(bytes) finds one in the text.
template <class Kind>
bool containsAny(std::string_view text, const Kind& kind) {
    const char* at = text.data();
    const size_t length = text.size();
    const auto eight = [](const char* from) {
        EightBytes bytes;
        std::memcpy(&bytes, from, sizeof bytes);
        return bytes;
    };
    if (length >= 8) {
        const char* const last = at + length - 8;
        for (; at < last; at += 8) {
            if (kind(eight(at)) != 0) return true;
        }
        return kind(eight(last)) != 0;
    }
    // Fewer than eight, and the first of them again in place of the others.
    if (length == 0) return false;
    EightBytes bytes = kEachByte * static_cast<uint8_t>(*at);
    for (size_t i = 1; i < length; ++i) bytes = bytes << 8 | static_cast<uint8_t>(at[i]);
    return kind(bytes) != 0;
}

}  // namespace sonaprobe::scope
