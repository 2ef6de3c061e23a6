// The trace clock: 24 MHz ticks of the host's monotonic clock.

#pragma once

#include <cstdint>

namespace sonaprobe::standin {

// A tick is kTickNumer / kTickDenom nanoseconds.
constexpr uint32_t kTickNumer = 125;
constexpr uint32_t kTickDenom = 3;

// Ticks by now.
uint64_t now();

}  // namespace sonaprobe::standin
