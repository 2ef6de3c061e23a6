// Divides ticks of any number by any divisor.

#include "analysis/tick_rate.h"

namespace sonaprobe {

Nanoseconds nanosecondsOf(uint64_t laterTick, uint64_t earlierTick, uint64_t ticksPerMicrosecond) {
    const bool forward = laterTick >= earlierTick;
    const uint64_t ticks = forward ? laterTick - earlierTick : earlierTick - laterTick;
    // Rounding down is away from 0 where the result is below it.
    const uint64_t rest = forward ? 0 : ticksPerMicrosecond - 1;
    const Wide length = (Wide{ticks} * 1000 + rest) / ticksPerMicrosecond;
    return saturated(forward ? length : -length);
}

}  // namespace sonaprobe
