// Records that make each text print once.

#include "events/sample_record.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "events/spelling.h"

namespace sonaprobe::events {

namespace {

constexpr uint64_t kObject = 0xFEED000000000001;

// The five argument words of a record in the making, with the bits that are settled.
class Words {
  public:
    uint64_t get(Slice slice) const {
        return words_[slice.word] << slice.dropHigh >> slice.dropLow;
    }
    void set(Slice slice, uint64_t value) { put(slice, value, maskOf(slice)); }
    // Leaves alone what is settled.
    void fill(Slice slice, uint64_t value) {
        put(slice, value, maskOf(slice) & ~settled_[slice.word]);
    }
    uint64_t word(unsigned n) const { return words_[n]; }

  private:
    void put(Slice slice, uint64_t value, uint64_t mask) {
        words_[slice.word] = (words_[slice.word] & ~mask) | (shifted(slice, value) & mask);
        settled_[slice.word] |= mask;
    }
    static unsigned shiftOf(Slice slice) { return slice.dropLow - slice.dropHigh; }
    static uint64_t maskOf(Slice slice) { return shifted(slice, ~uint64_t{0} >> slice.dropLow); }
    static uint64_t shifted(Slice slice, uint64_t value) { return value << shiftOf(slice); }

    std::array<uint64_t, 6> words_{};
    std::array<uint64_t, 6> settled_{};
};

// The digit that a value is known by.
uint64_t digitOf(Slice slice) {
    switch (slice.bits()) {
        case 64: return slice.word;
        case 32: return slice.dropHigh == 0 ? slice.word : slice.word + 5U;
        default: return (56U - slice.dropHigh) / 8 + 1;
    }
}

uint64_t decimalFor(Slice slice) {
    return slice.bits() == 64 ? digitOf(slice) * 111 : digitOf(slice);
}

uint64_t hexadecimalFor(Slice slice) {
    switch (slice.bits()) {
        case 64: return 0xCAFE000000000000 + digitOf(slice);
        case 32: return 0xCAFE0000 + digitOf(slice);
        default: return 0xC0 + digitOf(slice);
    }
}

// A half holds no more than 4 s.
uint64_t nanosecondsFor(Slice slice) {
    return slice.bits() == 64 ? digitOf(slice) * 1'000'000'000 + 111'222'333
                              : digitOf(slice) * 100'000'000 + 11'222'333;
}

uint64_t charactersFor(Slice slice) {
    return uint64_t{'a'} << 24 | uint64_t{'r'} << 16 | uint64_t{'g'} << 8 |
           (uint64_t{'0'} + digitOf(slice));
}

using PairOfWords = std::pair<std::string_view, std::string_view>;

PairOfWords pairOf(const Text& text, const Piece& piece) {
    const Text::Words& words = text.wordPairs[piece.wordPair];
    return {words.notZero, words.zero};
}

// The first of the qualifiers that a text answers.
uint32_t qualifierFor(const Text& text) {
    return static_cast<uint32_t>(std::countr_zero(text.qualifiers));
}

// Whether the first sample of a text shows the word for any value but zero. Depends on nothing but
// the text itself, so that a new text changes no other's sample.
bool firstShowsNotZero(const Event& event, const Text& text, Slice slice) {
    return (event.code / 4 + qualifierFor(text) + slice.word) % 2 != 0;
}

class Sampler {
  public:
    explicit Sampler(const TracedClass& traced) {
        const std::vector<Event> events = eventsOf(traced);
        for (const Event& event : events) {
            for (const Text& text : event.texts) noteShownWords(event, text);
        }
        for (const Event& event : events) {
            for (const Text& text : event.texts) {
                add(event, text, false);
                if (hasUnshownWord(text)) add(event, text, true);
            }
        }
    }
    std::vector<TraceRecord> records;

  private:
    void noteShownWords(const Event& event, const Text& text) {
        for (const Piece& piece : text.pieces) {
            if (piece.reading != Reading::words) continue;
            shown_[pairOf(text, piece)].insert(firstShowsNotZero(event, text, piece.slice));
        }
    }

    // A word that no first sample shows is shown by the second sample of the pair's first text.
    bool hasUnshownWord(const Text& text) {
        bool found = false;
        for (const Piece& piece : text.pieces) {
            if (piece.reading != Reading::words) continue;
            std::set<bool>& shown = shown_.at(pairOf(text, piece));
            found |= shown.size() == 1;
            shown = {false, true};
        }
        return found;
    }

    void add(const Event& event, const Text& text, bool otherWords) {
        Words words;
        if (text.condition.test == Test::equals) {
            words.set(text.condition.slice, text.condition.value);
        }
        for (const Piece& piece : text.pieces) putSpecial(words, event, text, piece, otherWords);
        for (const Piece& piece : text.pieces) putNumber(words, piece);
        if (text.condition.test == Test::notZero) words.fill(text.condition.slice, 1);
        words.fill({1}, kObject);
        passEarlierTexts(words, event, text);
        TraceRecord& record = records.emplace_back();
        record.debugid = event.code | qualifierFor(text);
        record.arg1 = words.word(1);
        record.arg2 = words.word(2);
        record.arg3 = words.word(3);
        record.arg4 = words.word(4);
        record.arg5 = words.word(5);
    }

    // The readings that need a value of their own kind; the same slice may be a number as well.
    static void putSpecial(Words& words, const Event& event, const Text& text, const Piece& piece,
                           bool otherWords) {
        const Slice slice = piece.slice;
        switch (piece.reading) {
            case Reading::words: {
                const bool notZero = firstShowsNotZero(event, text, slice) != otherWords;
                // The highest bit alone: a word that is true all the same.
                words.fill(slice, notZero ? uint64_t{1} << (slice.bits() - 1) : 0);
                break;
            }
            case Reading::nanoseconds: words.fill(slice, nanosecondsFor(slice)); break;
            case Reading::fourCharacters: words.fill(slice, charactersFor(slice)); break;
            case Reading::ticks: words.fill(slice, digitOf(slice) * 24 + 12); break;
            case Reading::character: words.fill(slice, 'A' + slice.word); break;
            case Reading::seconds:
                words.fill(slice, digitOf(slice) * 1'000'000'000);
                words.fill(piece.later, words.get(slice) + 7'000'000'000);
                break;
            default: break;
        }
    }

    static void putNumber(Words& words, const Piece& piece) {
        switch (piece.reading) {
            case Reading::signedDecimal:
            case Reading::unsignedDecimal: words.fill(piece.slice, decimalFor(piece.slice)); break;
            case Reading::hexadecimal: words.fill(piece.slice, hexadecimalFor(piece.slice)); break;
            case Reading::pointer:
                words.fill(piece.slice, 0xFEED000000000000 + digitOf(piece.slice));
                break;
            default: break;
        }
    }

    static bool holds(const Condition& condition, const Words& words) {
        const uint64_t value = words.get(condition.slice);
        return condition.test == Test::always ||
               (condition.test == Test::equals ? value == condition.value : value != 0);
    }

    // Makes no earlier text of the event answer.
    static void passEarlierTexts(Words& words, const Event& event, const Text& text) {
        const auto qualifier = static_cast<uint8_t>(1U << qualifierFor(text));
        for (const Text* earlier = event.texts.data(); earlier != &text; ++earlier) {
            if ((earlier->qualifiers & qualifier) == 0) continue;
            const Condition& condition = earlier->condition;
            if (!holds(condition, words)) continue;
            words.set(condition.slice, condition.test == Test::notZero ? 0 : condition.value + 1);
        }
        const auto answering = std::ranges::find_if(event.texts, [&](const Text& row) {
            return (row.qualifiers & qualifier) != 0 && holds(row.condition, words);
        });
        if (answering != event.texts.end() && &*answering == &text) return;
        std::fprintf(stderr, "no record was found for: %s %s\n", spellCode(event.code).c_str(),
                     std::string(text.text).c_str());
        std::exit(EXIT_FAILURE);
    }

    std::map<PairOfWords, std::set<bool>> shown_;
};

}  // namespace

std::vector<TraceRecord> sampleRecords(const TracedClass& traced) {
    return Sampler(traced).records;
}

}  // namespace sonaprobe::events
