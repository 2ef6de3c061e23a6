// The text of an event, piece by piece.

#include "events/log_text.h"

#include <cstring>

#include "events/argument.h"
#include "events/number_text.h"
#include "record/truncate.h"

namespace sonaprobe {

namespace {

// The tick of the device's trace clock, 24 MHz, whatever the machine's timebase.
constexpr double kDeviceTicksPerMicrosecond = 24.0;

// Seconds, then three digits each of milliseconds, microseconds and nanoseconds.
char* putNanoseconds(char* at, uint64_t nanoseconds) {
    const uint64_t seconds = nanoseconds / 1'000'000'000;
    const auto below = static_cast<uint32_t>(nanoseconds % 1'000'000'000);
    at = putSigned(at, static_cast<int32_t>(static_cast<uint32_t>(seconds)));
    *at = '.';
    at = putThreeDigits(at + 1, below / 1'000'000);
    *at = '.';
    const uint64_t eight = digits::eightDecimals(below % 1'000'000) + digits::kZeros;
    digits::store(at + 1, eight >> 16);
    at[4] = '.';
    digits::store(at + 5, eight >> 40);
    return at + 8;
}

char* putFourCharacters(char* at, uint64_t code) {
    const uint32_t highestFirst = __builtin_bswap32(static_cast<uint32_t>(code));
    std::memcpy(at, &highestFirst, sizeof highestFirst);
    return at + sizeof highestFirst;
}

char* putHexadecimal(char* at, const Piece& piece, uint64_t value) {
    if (!piece.alternate || value == 0) {  // zero has no "0x"
        return piece.zeroFill ? putHexZeroFilled(at, value, piece.width)
                              : putHex(at, value, piece.width);
    }
    const unsigned length = digits::countHex(value) + 2;
    if (length < piece.width) at = putFill(at, ' ', piece.width - length);
    return putHex(putText(at, "0x"), value);
}

// Inlined: a line has several values, and a call of its own for each costs a twentieth of it.
[[gnu::always_inline]] inline char* putValueText(char* at, const Event& event, const Piece& piece,
                                                 double ticksPerMicrosecond) {
    const TraceRecord& record = *event.record;
    const uint64_t value = argumentOf(record, piece.slice, piece.signExtend);
    switch (piece.reading) {
        case Reading::nothing: return at;
        case Reading::signedDecimal: {
            const auto number = static_cast<int64_t>(value);
            return piece.zeroFill ? putSignedZeroFilled(at, number, piece.width)
                                  : putSigned(at, number, piece.width);
        }
        case Reading::unsignedDecimal:
            return piece.zeroFill ? putUnsignedZeroFilled(at, value, piece.width)
                                  : putUnsigned(at, value, piece.width);
        case Reading::hexadecimal: return putHexadecimal(at, piece, value);
        case Reading::pointer: return putPointer(at, value);
        case Reading::words: {
            const WordPair& words = event.decoder->wordsOf(*event.text, piece);
            return putBlocks(at, event.decoder->text(value != 0 ? words.notZero : words.zero));
        }
        case Reading::nanoseconds: return putNanoseconds(at, value);
        case Reading::fourCharacters: return putFourCharacters(at, value);
        case Reading::ticks:
            return putReal(at, static_cast<double>(value) / kDeviceTicksPerMicrosecond, 6);
        case Reading::character: *at++ = static_cast<char>(value); return at;
        case Reading::seconds:
            return putUnsigned(
                at, elapsedSeconds(value, argumentOf(record, piece.later), ticksPerMicrosecond));
    }
    return at;
}

}  // namespace

uint64_t elapsedSeconds(uint64_t earlier, uint64_t later, double ticksPerMicrosecond) {
    return truncateToUnsigned(static_cast<double>(later - earlier) / ticksPerMicrosecond) /
           1'000'000;
}

char* putValue(char* at, const Event& event, const Piece& piece, double ticksPerMicrosecond) {
    return putValueText(at, event, piece, ticksPerMicrosecond);
}

char* putLogText(char* at, const Event& event, double ticksPerMicrosecond) {
    const BlockText text = event.decoder->text(event.text->text);
    for (const Piece& piece : event.decoder->piecesOf(*event.text)) {
        at = putBlocks(at, text.part(piece.literalBegin, piece.literalLength));
        at = putValueText(at, event, piece, ticksPerMicrosecond);
    }
    return at;
}

}  // namespace sonaprobe
