// A decoder as data: what the row vocabulary (row_vocabulary.h) builds while the program is
// compiled and decode() and the log text read for each record.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "events/block_text.h"
#include "events/conversion.h"

namespace sonaprobe {

// A bit field of one argument word: (word << dropHigh) >> dropLow, sign-extended on demand.
struct Slice {
    uint8_t word = 1;      // 1 to 5, as in arg1 to arg5
    uint8_t dropHigh = 0;  // bits
    uint8_t dropLow = 0;   // bits

    constexpr bool operator==(const Slice&) const = default;
    constexpr unsigned bits() const { return 64U - dropLow; }
};

// How the value of a slice becomes text.
enum class Reading : uint8_t {
    nothing,          // the piece is literal text only
    signedDecimal,    // %d, %lld
    unsignedDecimal,  // %u, %llu
    hexadecimal,      // %x, %llx
    pointer,          // %p: "0x" and hexadecimal digits, "0x0" for zero
    words,            // %s: one of two words, the first for any value but zero
    nanoseconds,      // %d.%03d.%03d.%03d
    fourCharacters,   // %c%c%c%c, bits 24-31 first
    ticks,            // %f of value / 24.0
    character,        // %c, the lowest byte
    seconds,          // %llu of elapsedSeconds(slice, later)
};

// A stretch of a text's literal characters, then one value.
struct Piece {
    uint16_t literalBegin = 0;
    uint8_t literalLength = 0;
    Reading reading = Reading::nothing;
    Slice slice{1};
    Slice later{1};  // seconds only
    bool signExtend = false;
    bool zeroFill = false;
    bool alternate = false;
    bool isResult = false;  // the value is a result: 0 is success
    uint8_t width = 0;
    uint8_t wordPair = 0;  // words only: which of the row's pairs
};

// Of one text.
constexpr size_t kMaxPieces = 12;

// A part of what a decoder keeps for all its rows: characters or pieces.
struct Stretch {
    uint16_t begin = 0;
    uint16_t length = 0;
};

struct WordPair {
    Stretch notZero;
    Stretch zero;
};

enum class Test : uint8_t { always, equals, notZero };

// What an argument must be for a text to answer.
struct Condition {
    Test test = Test::always;
    Slice slice{1};
    uint64_t value = 0;

    constexpr bool operator==(const Condition&) const = default;
};

// Sets of qualifier values, bit n for value n.
constexpr uint8_t kOnStart = 1U << 1;
constexpr uint8_t kOnEnd = 1U << 2;
constexpr uint8_t kOnOther = 1U << 0 | 1U << 3;
constexpr uint8_t kOnAny = kOnStart | kOnEnd | kOnOther;

// What stands between group and method in a name.
inline constexpr std::string_view kNameSeparator = "::";

// What texts may hold that a format has to escape or to put into quotation marks.
constexpr uint8_t kHoldsComma = 1U << 0;
constexpr uint8_t kHoldsMarks = 1U << 1;    // a quotation mark, a backslash or <
constexpr uint8_t kHoldsAnyByte = 1U << 2;  // what its record says as characters

// How a text tells of a failure.
enum class FailureSign : uint8_t {
    none,
    result,  // by one that is not 0
    words,   // whatever its values are
};

// An event (qualifiers is 0: code and name), or one of the texts that follow their event, in the
// order in which they are asked.
struct Row {
    uint32_t code = 0;
    uint8_t qualifiers = 0;
    bool verbose = false;  // selected as ever, printed only under --verbose
    FailureSign failure = FailureSign::none;
    uint8_t holds = 0;  // of a text: it, its words and its values' names
    Condition condition;
    Stretch name;              // "Group::method"
    uint16_t groupLength = 0;  // of the name
    Stretch text;
    Stretch pieces;
    uint16_t wordPairs = 0;  // where the row's begin

    constexpr bool isEvent() const { return qualifiers == 0; }
};

// Who sees the lines of a decoder.
enum class Gate : uint8_t {
    open,         // everybody
    audioServer,  // who asks for the audio server's (--HAL)
    historic,     // who asks for class 0, as no option of sonaprobe does
    shut,         // nobody: its events are known, and silent
};

// The qualifiers that an event's texts answer, as sets.
struct Answers {
    uint8_t all = 0;
    uint8_t failing = 0;  // by texts that may tell of a failure
};

// Rows refer to the rest by its place, so that no address in them has to be set when the program
// starts.
struct Decoder {
    uint32_t codeBase;
    std::string_view group;
    bool hasObject = true;  // arg1 is the object pointer of the prefix
    Gate gate = Gate::open;
    std::span<const Row> rows;
    const char* characters;
    const Piece* pieces;
    const Stretch* names;  // of the values, one for each of the pieces
    const WordPair* wordPairs;
    std::array<uint16_t, 256> rowAfterEvent{};  // by event number; 0 where there is no such event
    std::array<Answers, 256> answers{};         // by event number

    constexpr BlockText text(Stretch stretch) const {
        return {characters + stretch.begin, stretch.length};
    }

    constexpr std::span<const Piece> piecesOf(const Row& row) const {
        return {pieces + row.pieces.begin, row.pieces.length};
    }
    // The name of the value of one of the decoder's own pieces.
    constexpr std::string_view nameOf(const Piece& piece) const {
        return text(names[&piece - pieces]).view();
    }
    constexpr const WordPair& wordsOf(const Row& row, const Piece& piece) const {
        return wordPairs[row.wordPairs + piece.wordPair];
    }
};

}  // namespace sonaprobe
