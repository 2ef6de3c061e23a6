// How the parts of a row are written for readers.

#pragma once

#include <string>

#include "events/catalog.h"
#include "events/decoder.h"

namespace sonaprobe::events {

std::string spellCode(uint32_t code);             // "0x05245C0C"
std::string spellQualifiers(uint8_t qualifiers);  // "start", "end", "other", "any"
std::string spellSlice(Slice slice);              // "arg2", "lo(arg3)", "byte(0, arg4)"

// "byte(0, arg4) = 2", "arg3 not 0", or empty.
std::string spellCondition(const Condition& condition);

// What fills the conversions of a piece: "arg2", "boolean(arg4)", "nanos(hi(arg3))".
std::string spellArgument(const Text& text, const Piece& piece);

}  // namespace sonaprobe::events
