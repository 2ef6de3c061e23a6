// Numbers as text, written at a cursor: the printf conversions that lines need, without printf.
// Every function writes at `at` and returns the place behind what it wrote.

#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace sonaprobe {

// The most characters that one of the functions below writes: a padded field, or %f of a 64-bit
// number.
constexpr size_t kMaxNumberLength = 32;

namespace digits {

constexpr auto kHexPairs = [] {
    std::array<char, 512> pairs{};
    for (size_t i = 0; i < 256; ++i) {
        pairs[2 * i] = "0123456789abcdef"[i >> 4];
        pairs[2 * i + 1] = "0123456789abcdef"[i & 15];
    }
    return pairs;
}();

constexpr auto kDecimalPairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

constexpr auto kPowersOfTen = [] {
    std::array<uint64_t, 20> powers{};
    uint64_t power = 1;
    for (uint64_t& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

constexpr unsigned countDecimal(uint64_t value) {
    // 1233 / 4096 is log10(2), near enough for 64 bits; zero has one digit.
    const unsigned guess = (static_cast<unsigned>(std::bit_width(value | 1)) * 1233) >> 12;
    return guess + (value >= kPowersOfTen[guess] ? 1U : 0U) + (value == 0 ? 1U : 0U);
}

constexpr unsigned countHex(uint64_t value) {
    return (static_cast<unsigned>(std::bit_width(value | 1)) + 3) / 4;
}

}  // namespace digits

inline char* putText(char* at, std::string_view text) {
    std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

inline char* putFill(char* at, char fill, size_t count) {
    std::memset(at, fill, count);
    return at + count;
}

// The lowest `count` decimal digits of `value`, which has no more.
inline char* putDecimalDigits(char* at, uint64_t value, unsigned count) {
    char* const end = at + count;
    char* to = end;
    while (value >= 100) {
        const uint64_t rest = value / 100;
        to -= 2;
        std::memcpy(to, &digits::kDecimalPairs[2 * (value - rest * 100)], 2);
        value = rest;
    }
    if (value >= 10) {
        to -= 2;
        std::memcpy(to, &digits::kDecimalPairs[2 * value], 2);
    } else if (to > at) {
        *--to = static_cast<char>('0' + value);
    }
    std::memset(at, '0', static_cast<size_t>(to - at));
    return end;
}

// %llu, or %<width>llu.
inline char* putUnsigned(char* at, uint64_t value, unsigned width = 0) {
    const unsigned count = digits::countDecimal(value);
    if (count < width) at = putFill(at, ' ', width - count);
    return putDecimalDigits(at, value, count);
}

// %0<width>llu.
inline char* putUnsignedZeroFilled(char* at, uint64_t value, unsigned width) {
    const unsigned count = digits::countDecimal(value);
    return putDecimalDigits(at, value, count < width ? width : count);
}

// %lld, or %<width>lld.
inline char* putSigned(char* at, int64_t value, unsigned width = 0) {
    if (value >= 0) return putUnsigned(at, static_cast<uint64_t>(value), width);
    const uint64_t magnitude = 0 - static_cast<uint64_t>(value);
    const unsigned count = digits::countDecimal(magnitude);
    if (count + 1 < width) at = putFill(at, ' ', width - count - 1);
    *at++ = '-';
    return putDecimalDigits(at, magnitude, count);
}

// %0<width>lld: the sign stands before the zeros.
inline char* putSignedZeroFilled(char* at, int64_t value, unsigned width) {
    if (value >= 0) return putUnsignedZeroFilled(at, static_cast<uint64_t>(value), width);
    *at++ = '-';
    const uint64_t magnitude = 0 - static_cast<uint64_t>(value);
    return putUnsignedZeroFilled(at, magnitude, width > 0 ? width - 1 : 0);
}

// The lowest `count` hexadecimal digits of `value`.
inline char* putHexDigits(char* at, uint64_t value, unsigned count) {
    char* to = at + count;
    while (to - at >= 2) {
        to -= 2;
        std::memcpy(to, &digits::kHexPairs[2 * (value & 0xFF)], 2);
        value >>= 8;
    }
    if (to > at) *at = digits::kHexPairs[2 * (value & 0xF) + 1];
    return at + count;
}

// %llx, or %<width>llx.
inline char* putHex(char* at, uint64_t value, unsigned width = 0) {
    const unsigned count = digits::countHex(value);
    if (count < width) at = putFill(at, ' ', width - count);
    return putHexDigits(at, value, count);
}

// %0<width>llx.
inline char* putHexZeroFilled(char* at, uint64_t value, unsigned width) {
    const unsigned count = digits::countHex(value);
    return putHexDigits(at, value, count < width ? width : count);
}

// %p: "0x" and the digits, "0x0" for zero.
inline char* putPointer(char* at, uint64_t value) { return putHex(putText(at, "0x"), value); }

// %.<decimals>f, padded with blanks to `width`. At most 9 decimals; value finite, at least 0 and
// below 2^64.
char* putReal(char* at, double value, unsigned decimals, unsigned width = 0);

}  // namespace sonaprobe
