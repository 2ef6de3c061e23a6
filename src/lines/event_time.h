// The time column's text, and spans of the trace clock.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace sonaprobe {

// The text is cut to 43 characters; while it is made, two numbers of 19 digits need more room.
constexpr size_t kEventTimeLength = 43;
constexpr size_t kEventTimeRoom = 64;

// Writes the time text of a stamp to `destination`, which has kEventTimeRoom bytes, in the form
// that Settings::timeMode asks for, and returns it; with mode 0 nothing is written and the text is
// empty. Every call takes part in the count of the time since the last one.
std::string_view formatEventTime(uint64_t timestamp, char* destination);

// Whole seconds from one stamp of the trace clock to a later one, as unsigned arithmetic has it.
uint64_t elapsedSeconds(uint64_t earlier, uint64_t later);

}  // namespace sonaprobe
