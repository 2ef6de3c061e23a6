// The one interpreter of decoder rows: selects the text, fills its pieces.

#include "events/decode.h"

#include <cstring>

#include "events/number_text.h"
#include "lines/event_time.h"
#include "lines/output_line.h"
#include "lines/prefix.h"
#include "lines/unclassified.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

// The tick of the device's trace clock, 24 MHz, whatever the machine's timebase.
constexpr double kTicksPerMicrosecond = 24.0;

uint64_t argumentOf(const TraceRecord& record, Slice slice, bool signExtend = false) {
    static_assert(offsetof(TraceRecord, arg1) == 1 * sizeof(uint64_t));
    static_assert(offsetof(TraceRecord, arg5) == 5 * sizeof(uint64_t));
    uint64_t word;
    std::memcpy(&word, reinterpret_cast<const char*>(&record) + slice.word * sizeof word,
                sizeof word);
    word <<= slice.dropHigh;
    return signExtend ? static_cast<uint64_t>(static_cast<int64_t>(word) >> slice.dropLow)
                      : word >> slice.dropLow;
}

bool holds(const Condition& condition, const TraceRecord& record) {
    switch (condition.test) {
        case Test::always: return true;
        case Test::equals: return argumentOf(record, condition.slice) == condition.value;
        case Test::notZero: return argumentOf(record, condition.slice) != 0;
    }
    return false;
}

// The first text behind `event` that answers the record, or null.
const Row* selectText(const Row* event, const Row* end, const TraceRecord& record) {
    const unsigned qualifier = 1U << (record.debugid & 3);
    for (const Row* row = event + 1; row != end && !row->isEvent(); ++row) {
        if ((row->qualifiers & qualifier) != 0 && holds(row->condition, record)) return row;
    }
    return nullptr;
}

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

char* putValue(char* at, const Decoder& decoder, const Row& row, const Piece& piece,
               const TraceRecord& record) {
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
            const WordPair& words = decoder.wordsOf(row, piece);
            return putBlocks(at, decoder.text(value != 0 ? words.notZero : words.zero));
        }
        case Reading::nanoseconds: return putNanoseconds(at, value);
        case Reading::fourCharacters: return putFourCharacters(at, value);
        case Reading::ticks:
            return putReal(at, static_cast<double>(value) / kTicksPerMicrosecond, 6);
        case Reading::character: *at++ = static_cast<char>(value); return at;
        case Reading::seconds:
            return putUnsigned(at, elapsedSeconds(value, argumentOf(record, piece.later)));
    }
    return at;
}

char* putLogText(char* at, const Decoder& decoder, const Row& row, const TraceRecord& record) {
    const BlockText text = decoder.text(row.text);
    for (const Piece& piece : decoder.piecesOf(row)) {
        at = putBlocks(at, text.part(piece.literalBegin, piece.literalLength));
        at = putValue(at, decoder, row, piece, record);
    }
    return at;
}

}  // namespace

void decodeRecord(const Decoder& decoder, const TraceRecord& record) {
    const size_t rowAfterEvent = decoder.rowAfterEvent[eventNumberOf(record.debugid)];
    if (rowAfterEvent == 0) {
        printUnclassifiedRecord(&record);
        return;
    }
    const Row* const end = decoder.rows.data() + decoder.rows.size();
    const Row& event = decoder.rows[rowAfterEvent - 1];
    const Row* const text = selectText(&event, end, record);
    if (text == nullptr || (text->verbose && !settings.verbose)) return;

    const EventName name{decoder.text(text->name), text->groupLength};
    const uint64_t object = decoder.hasObject ? record.arg1 : 0;
    if (!printEventPrefix(headerOf(record), name, object)) return;
    outputLine.moveTo(putLogText(outputLine.cursor(), decoder, *text, record));
    outputLine.end();
}

}  // namespace sonaprobe
