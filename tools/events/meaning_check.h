// Whether the sentences and fields of the reference fit the decoder tables.

#pragma once

#include <span>
#include <string>
#include <vector>

#include "events/catalog.h"
#include "meanings/meanings.h"

namespace sonaprobe::events {

// What the decoder tables hold, as far as it has a meaning: codes and names of values.
struct Told {
    std::vector<uint32_t> codes;
    std::vector<std::string_view> values;
};

Told told(const std::vector<TracedClass>& classes);

// The first fault as a message, empty where there is none: an event without its one sentence, a
// sentence without its event, one out of order, one without a full stop, a field that no text has.
std::string faultOf(const Told& told, std::span<const std::span<const meanings::Meaning>> sentences,
                    std::span<const meanings::FieldGroup> fields);

}  // namespace sonaprobe::events
