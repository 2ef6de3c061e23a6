// The LOG text of a line: an event's words, its values put among them.

#pragma once

#include <cstdint>

#include "events/event.h"

namespace sonaprobe {

// What the longest text takes, and what its blocks write after it.
constexpr size_t kLogTextRoom = 3840;

// Write the text of an event that has one, or one of its values, at `at`, where there is
// kLogTextRoom. Ticks become seconds by `ticksPerMicrosecond`. Return the place after the text.
char* putLogText(char* at, const Event& event, double ticksPerMicrosecond);
char* putValue(char* at, const Event& event, const Piece& piece, double ticksPerMicrosecond);

// Whole seconds from one stamp of the trace clock to a later one, as unsigned arithmetic has it.
uint64_t elapsedSeconds(uint64_t earlier, uint64_t later, double ticksPerMicrosecond);

}  // namespace sonaprobe
