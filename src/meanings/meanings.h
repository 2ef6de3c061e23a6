// What the methods of events do in their drivers, one sentence each, and which standard a field is
// read by: for the reference of events. Neither sonaprobe nor the library carries these texts.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace sonaprobe::meanings {

struct Meaning {
    uint32_t code;              // the event's, without its qualifier
    std::string_view sentence;  // of the method, begins with a verb and ends in a full stop
};

// A value of the texts that only a public standard explains.
struct Field {
    std::string_view name;    // as the texts name the value
    std::string_view means;   // a sentence
    std::string_view source;  // the standard's short name and its chapter
};

struct FieldGroup {
    std::string_view title;
    std::string_view standard;  // its full name
    std::span<const Field> fields;
};

// The sentences of all events, in the order of their codes; the audio server's last.
std::span<const std::span<const Meaning>> allMeanings();

// The sentence of an event; empty for a code without one.
std::string_view meaningOf(uint32_t code);

// The fields, by standard.
std::span<const FieldGroup> fieldGroups();

}  // namespace sonaprobe::meanings
