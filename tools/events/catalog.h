// The decoders as a catalogue: classes, their events, the events' texts.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "format/row.h"

namespace sonaprobe::events {

struct TracedClass {
    std::string id;  // "20", or "server" for the audio server
    const Decoder* decoder;
    std::string code = {};          // the registry's four characters, or empty
    std::string registryName = {};  // or empty

    bool isSilent() const { return decoder->group.empty(); }
    std::string title() const;  // "20 OrvelHDAController"
};

struct Event {
    const Row* event;
    std::span<const Row> texts;
};

// All classes with a decoder, the silent ones too, in the order of their ids; the server last.
std::vector<TracedClass> tracedClasses();

// The events of a decoder with their texts, none for a silent class.
std::vector<Event> eventsOf(const TracedClass& traced);

// The group and method that a text prints.
std::string_view groupOf(const Decoder& decoder, const Event& event, const Row& text);
std::string_view methodOf(const Event& event, const Row& text);

}  // namespace sonaprobe::events
