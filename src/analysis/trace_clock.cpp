// Ticks to nanoseconds, and where the clock stepped back.

#include "analysis/trace_clock.h"

#include <algorithm>
#include <limits>

namespace sonaprobe {

namespace {

__extension__ using Wide = __int128;

constexpr uint64_t kMicrosecondsPerSecond = 1'000'000;

Nanoseconds saturated(Wide value) {
    constexpr Wide kLeast = std::numeric_limits<Nanoseconds>::min();
    constexpr Wide kMost = std::numeric_limits<Nanoseconds>::max();
    return static_cast<Nanoseconds>(std::clamp(value, kLeast, kMost));
}

}  // namespace

Nanoseconds nanosecondsOf(uint64_t laterTick, uint64_t earlierTick, uint64_t ticksPerMicrosecond) {
    const Wide ticks = Wide{laterTick} - Wide{earlierTick};
    return saturated(ticks * 1000 / Wide{ticksPerMicrosecond});
}

void TraceClock::takeDivisor(uint64_t ticksPerMicrosecond) {
    if (ticksPerMicrosecond == 0) return;
    divisorKnown_ = true;
    if (ticksPerMicrosecond == divisor_) return;
    divisor_ = ticksPerMicrosecond;
    divisorChanged_ = begun_;
}

bool TraceClock::stepsBack(const TraceRecord& record) const {
    const auto last = lastTickOfThread_.find(record.arg5);
    if (last != lastTickOfThread_.end() && record.timestamp < last->second) return true;
    return record.timestamp < latestTick_ &&
           Wide{latestTick_ - record.timestamp} > Wide{divisor_} * kMicrosecondsPerSecond;
}

TraceClock::Reading TraceClock::read(const TraceRecord& record) {
    const uint64_t tick = record.timestamp;
    if (!divisorKnown_) assumedDivisor_ = true;
    const Nanoseconds latestBefore = latest_;
    const bool restarts = begun_ && (divisorChanged_ || stepsBack(record));
    if (!begun_ || restarts) {
        if (restarts) base_ = latest_;
        baseTick_ = tick;
        latestTick_ = tick;
        lastTickOfThread_.clear();
        begun_ = true;
        divisorChanged_ = false;
    }
    lastTickOfThread_[record.arg5] = tick;
    latestTick_ = std::max(latestTick_, tick);
    const Nanoseconds time =
        saturated(Wide{base_} + Wide{nanosecondsOf(tick, baseTick_, divisor_)});
    latest_ = std::max(latest_, time);
    return {time, restarts, latestBefore};
}

}  // namespace sonaprobe
