// Reads the trace clock and answers its timebase.

#include "platform/standin/clock.h"

#include <time.h>

#include "calls.h"

namespace sonaprobe::standin {

uint64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    constexpr uint64_t kTicksPerSecond = uint64_t{1'000'000'000} * kTickDenom / kTickNumer;
    return static_cast<uint64_t>(time.tv_sec) * kTicksPerSecond +
           static_cast<uint64_t>(time.tv_nsec) * kTickDenom / kTickNumer;
}

}  // namespace sonaprobe::standin

int mach_timebase_info(mach_timebase_info_data_t* timebase) {
    *timebase = {sonaprobe::standin::kTickNumer, sonaprobe::standin::kTickDenom};
    return 0;
}
