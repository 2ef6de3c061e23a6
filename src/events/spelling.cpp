// How the parts of a row are written for readers.

#include "events/spelling.h"

#include <array>
#include <cstdio>

namespace sonaprobe::events {

namespace {

std::string call(const char* function, const std::string& argument) {
    return std::string(function) + '(' + argument + ')';
}

std::string spellWords(const Text::Words& words, const std::string& argument) {
    if (words.notZero == "true" && words.zero == "false") return call("boolean", argument);
    if (words.notZero == "yes" && words.zero == "no") return call("yesNo", argument);
    return call("either", argument + ", \"" + std::string(words.notZero) + "\", \"" +
                              std::string(words.zero) + '"');
}

}  // namespace

std::string spellCode(uint32_t code) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", code);
    return text.data();
}

std::string spellQualifiers(uint8_t qualifiers) {
    switch (qualifiers) {
        case kOnStart: return "start";
        case kOnEnd: return "end";
        case kOnOther: return "other";
        default: return "any";
    }
}

std::string spellSlice(Slice slice) {
    std::string word = "arg" + std::to_string(slice.word);
    switch (slice.bits()) {
        case 64: return word;
        case 32: return call(slice.dropHigh == 0 ? "hi" : "lo", word);
        default: return "byte(" + std::to_string((56 - slice.dropHigh) / 8) + ", " + word + ')';
    }
}

std::string spellCondition(const Condition& condition) {
    switch (condition.test) {
        case Test::equals:
            return spellSlice(condition.slice) + " = " + std::to_string(condition.value);
        case Test::notZero: return spellSlice(condition.slice) + " not 0";
        case Test::always: break;
    }
    return {};
}

std::string spellArgument(const Text& text, const Piece& piece) {
    std::string slice = spellSlice(piece.slice);
    switch (piece.reading) {
        case Reading::words: return spellWords(text.wordPairs[piece.wordPair], slice);
        case Reading::nanoseconds: return call("nanos", slice);
        case Reading::fourCharacters: return call("fourCC", slice);
        case Reading::ticks: return call("ticks", slice);
        case Reading::character: return call("character", slice);
        case Reading::seconds: return call("seconds", slice + ", " + spellSlice(piece.later));
        default: return slice;
    }
}

}  // namespace sonaprobe::events
