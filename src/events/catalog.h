// The decoders as a catalogue: classes, their events, the events' texts.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "events/decoder.h"

namespace sonaprobe::events {

struct TracedClass {
    std::string id;  // "20", or "server" for the audio server
    const Decoder* decoder;
    std::string code = {};          // the registry's four characters, or empty
    std::string registryName = {};  // or empty

    bool isSilent() const { return decoder->gate == Gate::shut; }
    std::string title() const;  // "20 OrvelHDAController"
};

// A text with all it refers to.
struct Text {
    struct Words {
        std::string_view notZero;
        std::string_view zero;
    };

    uint8_t qualifiers;
    bool verbose;
    bool tellsFailure;  // in its words
    Condition condition;
    std::string_view group;
    std::string_view method;
    std::string_view text;
    std::span<const Piece> pieces;
    std::vector<Words> wordPairs = {};          // in the order of the pieces' numbers
    std::vector<std::string_view> values = {};  // the names of the text's values, in their order
};

struct Event {
    uint32_t code;
    std::string_view group;
    std::string_view method;
    std::vector<Text> texts = {};
};

// All classes with a decoder, the silent ones too, in the order of their ids; the server last.
std::vector<TracedClass> tracedClasses();

// The events of a decoder with their texts, none for a silent class.
std::vector<Event> eventsOf(const TracedClass& traced);

}  // namespace sonaprobe::events
