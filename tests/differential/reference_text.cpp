// LOG texts the slow way. What a row holds beside its text is only asked for slices and readings;
// conversions are found and printed anew.

#include "reference_text.h"

#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace sonaprobe::differential {

namespace {

// The conversions are the rows' own, found at run time.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <typename T>
std::string printOne(const std::string& conversion, T value) {
    std::array<char, 512> text{};
    const int length = std::snprintf(text.data(), text.size(), conversion.c_str(), value);
    if (length < 0 || static_cast<size_t>(length) >= text.size()) std::abort();
    return {text.data(), static_cast<size_t>(length)};
}
#pragma GCC diagnostic pop

// The conversion at the start of a text: from "%" to its letter.
std::string conversionAt(std::string_view text) {
    return std::string(text.substr(0, text.find_first_of("diuxpcsf", 1) + 1));
}

bool isWide(const std::string& conversion) { return conversion.find("ll") != std::string::npos; }

std::string printNumber(const std::string& conversion, uint64_t value) {
    switch (conversion.back()) {
        case 'd':
            return isWide(conversion)
                       ? printOne(conversion, static_cast<long long>(value))
                       : printOne(conversion, static_cast<int>(static_cast<unsigned>(value)));
        case 'u':
        case 'x':
            return isWide(conversion) ? printOne(conversion, static_cast<unsigned long long>(value))
                                      : printOne(conversion, static_cast<unsigned>(value));
        case 'c': return printOne(conversion, static_cast<int>(static_cast<signed char>(value)));
        case 'p':
            // The C library of some hosts has a word for zero.
            return value == 0 ? "0x0" : printOne(conversion, std::bit_cast<void*>(value));
        default: std::abort();
    }
}

uint64_t wholeSeconds(uint64_t earlier, uint64_t later, double divisor) {
    const double microseconds = static_cast<double>(later - earlier) / divisor;
    if (!(microseconds > 0)) return 0;  // NaN among them
    const uint64_t whole =
        microseconds >= 0x1p64 ? UINT64_MAX : static_cast<uint64_t>(microseconds);
    return whole / 1'000'000;
}

// The values of a piece, one for each conversion that it fills.
std::string printPiece(const Decoder& decoder, const Row& row, const Piece& piece,
                       const TraceRecord& record, double divisor, const std::string& conversion,
                       unsigned nth) {
    const uint64_t value = valueOf(record, piece.slice);
    switch (piece.reading) {
        case Reading::words: {
            const WordPair& words = decoder.wordsOf(row, piece);
            const Stretch word = value != 0 ? words.notZero : words.zero;
            return printOne(conversion, std::string(decoder.text(word).view()).c_str());
        }
        case Reading::ticks: return printOne(conversion, static_cast<double>(value) / 24.0);
        case Reading::seconds:
            return printNumber(conversion,
                               wholeSeconds(value, valueOf(record, piece.later), divisor));
        case Reading::nanoseconds: {
            constexpr std::array<uint64_t, 4> kUnits{1'000'000'000, 1'000'000, 1'000, 1};
            const uint64_t units = value / kUnits[nth];
            return printNumber(conversion, nth == 0 ? units : units % 1000);
        }
        case Reading::fourCharacters: return printNumber(conversion, value >> (24 - 8 * nth));
        default: break;
    }
    const bool negativeHalf = conversion.back() == 'd' && piece.slice.bits() == 32;
    return printNumber(conversion,
                       negativeHalf ? static_cast<uint64_t>(static_cast<int32_t>(value)) : value);
}

unsigned conversionsOf(const Piece& piece) {
    const bool four =
        piece.reading == Reading::nanoseconds || piece.reading == Reading::fourCharacters;
    return four ? 4 : 1;
}

}  // namespace

uint64_t valueOf(const TraceRecord& record, Slice slice) {
    const std::array<uint64_t, 5> words{record.arg1, record.arg2, record.arg3, record.arg4,
                                        record.arg5};
    const uint64_t word = words.at(slice.word - 1U);
    switch (slice.bits()) {
        case 64: return word;
        case 32: return slice.dropHigh == 0 ? word / 0x100000000 : word % 0x100000000;
        case 8: return (word >> (56 - slice.dropHigh)) & 0xFF;
        default: std::abort();
    }
}

std::string logText(const Decoder& decoder, const Row& row, const TraceRecord& record,
                    double divisor) {
    std::string result;
    const std::string_view text = decoder.text(row.text).view();
    const Piece* piece = decoder.piecesOf(row).data();
    unsigned nth = 0;  // conversion of the piece
    for (size_t at = 0; at < text.size();) {
        if (text[at] != '%') {
            result += text[at++];
            continue;
        }
        if (text[at + 1] == '%') {
            result += '%';
            at += 2;
            continue;
        }
        while (piece->reading == Reading::nothing) ++piece;
        const std::string conversion = conversionAt(text.substr(at));
        result += printPiece(decoder, row, *piece, record, divisor, conversion, nth);
        at += conversion.size();
        if (++nth == conversionsOf(*piece)) {
            ++piece;
            nth = 0;
        }
    }
    return result;
}

}  // namespace sonaprobe::differential
