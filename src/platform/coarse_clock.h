// The time by which a look at a file grows old: cheap, and exact to some milliseconds.

#pragma once

#include <cstdint>
#include <time.h>

namespace sonaprobe {

// Nanoseconds since some moment, by a clock that nobody sets.
inline int64_t coarseNanoseconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace sonaprobe
