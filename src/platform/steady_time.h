// Time for measuring how long something has lasted: cheap, and exact to some milliseconds.

#pragma once

#include <cstdint>
#include <time.h>

namespace sonaprobe {

#ifdef CLOCK_MONOTONIC_COARSE
constexpr clockid_t kSteadyClock = CLOCK_MONOTONIC_COARSE;
#else
constexpr clockid_t kSteadyClock = CLOCK_MONOTONIC;
#endif

// Nanoseconds since some moment, by a clock that nobody sets.
inline int64_t steadyNanoseconds() {
    timespec time{};
    clock_gettime(kSteadyClock, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace sonaprobe
