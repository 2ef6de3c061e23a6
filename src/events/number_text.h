// Numbers as text, written at a cursor: the printf conversions that lines need, without printf.
//
// Every function writes at `at` and returns the place after the text. It may also write up to
// kDigitSlack characters beyond that place, which the next text overwrites: digits are made eight
// at a time and stored whole.

#pragma once

#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace sonaprobe {

constexpr size_t kDigitSlack = 32;

// The most characters of one number: a padded field, or %f of a 64-bit number.
constexpr size_t kMaxNumberLength = 32;

namespace digits {

static_assert(std::endian::native == std::endian::little, "digits are stored lowest byte first");

constexpr uint64_t kZeros = 0x3030303030303030;  // '0' in each byte

// The digits of numbers below 10,000 that stand in the 32-bit lanes of a word, the highest in the
// lowest byte. Pairs, then digits are split side by side, each division by a multiplication.
template <typename Word>
constexpr Word fourDigitsEach(Word fours) {
    const Word hundreds = ((fours * 10486) >> 20) & static_cast<Word>(0x0000007F'0000007F);
    const Word pairs = hundreds | (fours - hundreds * 100) << 16;
    const Word tens = ((pairs * 103) >> 10) & static_cast<Word>(0x000F'000F'000F'000F);
    return tens | (pairs - tens * 10) << 8;
}

// The eight decimal digits of a value below 100,000,000.
constexpr uint64_t eightDecimals(uint32_t value) {
    const uint64_t high = value / 10000;
    return fourDigitsEach(high | (value - high * 10000) << 32);
}

// The four decimal digits of a value below 10,000.
constexpr uint32_t fourDecimals(uint32_t value) { return fourDigitsEach(value); }

// Sixteen characters side by side, which every compiler of ours turns into the machine's vectors.
using Characters = char __attribute__((vector_size(16)));
using Words = uint64_t __attribute__((vector_size(16)));

// The sixteen hexadecimal digits of a value. They go into vectors as numbers: through memory, a
// load of sixteen bytes would have to wait for the store of eight.
inline Characters hexCharacters(uint64_t value) {
    const uint64_t bytes = __builtin_bswap64(value);
    const uint64_t high = (bytes >> 4) & 0x0F0F0F0F0F0F0F0F;
    const uint64_t low = bytes & 0x0F0F0F0F0F0F0F0F;
    const auto highs = std::bit_cast<Characters>(Words{high, 0});
    const auto lows = std::bit_cast<Characters>(Words{low, 0});
    const Characters nibbles = __builtin_shufflevector(highs, lows, 0, 16, 1, 17, 2, 18, 3, 19, 4,
                                                       20, 5, 21, 6, 22, 7, 23);
    constexpr char kToLetters = 'a' - '9' - 1;
    return nibbles + '0' + ((nibbles > 9) & kToLetters);
}

inline void store(char* at, uint64_t eightCharacters) { std::memcpy(at, &eightCharacters, 8); }

// The bits of the leading zeros of kDigits decimal digits, 1 to 8 of them; the last digit is none.
template <unsigned kDigits>
constexpr unsigned leadingZeroBits(uint64_t decimals) {
    return static_cast<unsigned>(std::countr_zero(decimals | uint64_t{1} << 8 * (kDigits - 1))) &
           ~7U;
}

// What makes '0' a blank in the lowest `bits` bits, bytes of them.
constexpr uint64_t zerosToBlanks(unsigned bits) {
    constexpr uint64_t kZeroToBlank = kZeros ^ 0x2020202020202020;
    return kZeroToBlank & ((uint64_t{1} << bits) - 1);
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

// %llu.
inline char* putUnsigned(char* at, uint64_t value) {
    constexpr uint64_t kEightDigits = 100'000'000;
    if (value < 10) {
        *at = static_cast<char>('0' + value);
        return at + 1;
    }
    if (value >= kEightDigits) {
        const uint64_t high = value / kEightDigits;
        at = putUnsigned(at, high);
        const auto low = static_cast<uint32_t>(value - high * kEightDigits);
        digits::store(at, digits::eightDecimals(low) + digits::kZeros);
        return at + 8;
    }
    const uint64_t eight = digits::eightDecimals(static_cast<uint32_t>(value));
    const auto leadingBits = static_cast<unsigned>(std::countr_zero(eight)) & ~7U;
    digits::store(at, (eight + digits::kZeros) >> leadingBits);
    return at + (64 - leadingBits) / 8;
}

// Moves the text of `at` to `end` to the right, so that it ends at `at` + width, after `fill`.
inline char* padLeft(char* at, char* end, char fill, size_t width) {
    const auto length = static_cast<size_t>(end - at);
    if (length >= width) return end;
    std::memmove(at + width - length, at, length);
    std::memset(at, fill, width - length);
    return at + width;
}

// %10llu, for the columns of the time text: a number of at most ten digits has a length that
// nothing after it waits for.
inline char* putUnsignedInTen(char* at, uint64_t value) {
    constexpr uint64_t kEightDigits = 100'000'000;
    if (value >= 100 * kEightDigits) return putUnsigned(at, value);
    if (value < 10'000) {  // most deltas
        const uint32_t four = digits::fourDecimals(static_cast<uint32_t>(value));
        const unsigned leading = digits::leadingZeroBits<4>(four);
        std::memset(at, ' ', 6);
        digits::store(at + 6, (four + digits::kZeros) ^ digits::zerosToBlanks(leading));
        return at + 10;
    }
    const uint64_t high = value / kEightDigits;
    const uint64_t eight =
        digits::eightDecimals(static_cast<uint32_t>(value - high * kEightDigits));
    if (high != 0) {
        at[0] = high < 10 ? ' ' : static_cast<char>('0' + high / 10);
        at[1] = static_cast<char>('0' + high % 10);
        digits::store(at + 2, eight + digits::kZeros);
        return at + 10;
    }
    at[0] = at[1] = ' ';
    const unsigned leading = digits::leadingZeroBits<8>(eight);
    digits::store(at + 2, (eight + digits::kZeros) ^ digits::zerosToBlanks(leading));
    return at + 10;
}

// %<width>llu, or with another fill than blanks.
inline char* putUnsignedFilled(char* at, uint64_t value, char fill, unsigned width) {
    constexpr unsigned kEight = 8;
    if (value >= 100'000'000 || width > kEight) {
        return padLeft(at, putUnsigned(at, value), fill, width);
    }
    const uint64_t eight = digits::eightDecimals(static_cast<uint32_t>(value));
    const unsigned leading = digits::leadingZeroBits<8>(eight) / kEight;
    const uint64_t zeroToFill = digits::kZeros / '0' * static_cast<uint64_t>(fill ^ '0');
    const uint64_t leadingMask = (uint64_t{1} << kEight * leading) - 1;
    const unsigned columns = width > kEight - leading ? width : kEight - leading;
    digits::store(
        at, ((eight + digits::kZeros) ^ (zeroToFill & leadingMask)) >> kEight * (kEight - columns));
    return at + columns;
}

// %<width>llu.
inline char* putUnsigned(char* at, uint64_t value, unsigned width) {
    return putUnsignedFilled(at, value, ' ', width);
}

// %0<width>llu.
inline char* putUnsignedZeroFilled(char* at, uint64_t value, unsigned width) {
    return putUnsignedFilled(at, value, '0', width);
}

// %02u of a value below 100.
inline char* putTwoDigits(char* at, unsigned value) {
    digits::store(at, (digits::fourDecimals(value) + digits::kZeros) >> 16);
    return at + 2;
}

// %03u of a value below 1000.
inline char* putThreeDigits(char* at, unsigned value) {
    digits::store(at, (digits::fourDecimals(value) + digits::kZeros) >> 8);
    return at + 3;
}

// %lld.
inline char* putSigned(char* at, int64_t value) {
    if (value >= 0) return putUnsigned(at, static_cast<uint64_t>(value));
    *at = '-';
    return putUnsigned(at + 1, 0 - static_cast<uint64_t>(value));
}

// %<width>lld.
inline char* putSigned(char* at, int64_t value, unsigned width) {
    return padLeft(at, putSigned(at, value), ' ', width);
}

// %0<width>lld: the sign stands before the zeros.
inline char* putSignedZeroFilled(char* at, int64_t value, unsigned width) {
    if (value >= 0) return putUnsignedZeroFilled(at, static_cast<uint64_t>(value), width);
    *at = '-';
    return putUnsignedZeroFilled(at + 1, 0 - static_cast<uint64_t>(value),
                                 width > 0 ? width - 1 : 0);
}

// The lowest `count` hexadecimal digits of `value`, 1 to 16 of them.
inline char* putHexDigits(char* at, uint64_t value, unsigned count) {
    const digits::Characters all = digits::hexCharacters(value << 4 * (16 - count));
    std::memcpy(at, &all, sizeof all);
    return at + count;
}

// %llx.
inline char* putHex(char* at, uint64_t value) {
    return putHexDigits(at, value, digits::countHex(value));
}

// %<width>llx.
inline char* putHex(char* at, uint64_t value, unsigned width) {
    constexpr unsigned kAll = 16;
    const unsigned count = digits::countHex(value);
    if (count >= width) return putHexDigits(at, value, count);
    if (width > kAll) at = putFill(at, ' ', width - kAll);
    if (width > kAll) width = kAll;
    std::memset(at, ' ', kAll);
    return putHexDigits(at + width - count, value, count);
}

// %0<width>llx.
inline char* putHexZeroFilled(char* at, uint64_t value, unsigned width) {
    constexpr unsigned kAll = 16;
    if (width >= kAll) return putHexDigits(putFill(at, '0', width - kAll), value, kAll);
    if (value >> 4 * width == 0 && width != 0) return putHexDigits(at, value, width);
    return putHex(at, value);
}

// %p: "0x" and the digits, "0x0" for zero.
inline char* putPointer(char* at, uint64_t value) { return putHex(putText(at, "0x"), value); }

// %.<decimals>f, padded with blanks to `width`, of a value below 2^64. At most 8 decimals.
inline char* putReal(char* at, double value, int decimals, unsigned width = 0) {
    char* const end =
        std::to_chars(at, at + kMaxNumberLength, value, std::chars_format::fixed, decimals).ptr;
    return padLeft(at, end, ' ', width);
}

}  // namespace sonaprobe
