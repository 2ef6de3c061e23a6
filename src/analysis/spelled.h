// Times and numbers as people write them.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "analysis/trace_clock.h"

namespace sonaprobe {

// "12.345s", "20ms", "412us", "412 µs", "90 ns", "2min", "1h", "-5ms"; nothing else. Beyond what
// nanoseconds can hold they saturate.
std::optional<Nanoseconds> spelledTime(std::string_view text);

// "21", "-3", "0x1F": a whole number of 64 bits, below 0 as its two's complement.
std::optional<uint64_t> spelledNumber(std::string_view text);

}  // namespace sonaprobe
