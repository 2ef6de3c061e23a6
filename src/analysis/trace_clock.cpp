// Ticks to nanoseconds, and where the clock stepped back.

#include "analysis/trace_clock.h"

#include <algorithm>
#include <limits>

namespace sonaprobe {

Nanoseconds saturated(Wide nanoseconds) {
    constexpr Wide kLeast = std::numeric_limits<Nanoseconds>::min();
    constexpr Wide kMost = std::numeric_limits<Nanoseconds>::max();
    return static_cast<Nanoseconds>(std::clamp(nanoseconds, kLeast, kMost));
}

Nanoseconds nanosecondsOf(uint64_t laterTick, uint64_t earlierTick, uint64_t ticksPerMicrosecond) {
    const bool forward = laterTick >= earlierTick;
    const uint64_t ticks = forward ? laterTick - earlierTick : earlierTick - laterTick;
    // Rounding down is away from 0 where the result is below it.
    const uint64_t rest = forward ? 0 : ticksPerMicrosecond - 1;
    constexpr uint64_t kHalf = std::numeric_limits<uint64_t>::max() / 2;
    // A division of 64 bits is several times as fast. Its result cannot be too large.
    if (ticks < kHalf / 2000 && rest < kHalf / 2) {
        const auto length = static_cast<Nanoseconds>((ticks * 1000 + rest) / ticksPerMicrosecond);
        return forward ? length : -length;
    }
    const Wide length = (Wide{ticks} * 1000 + rest) / ticksPerMicrosecond;
    return saturated(forward ? length : -length);
}

bool TraceClock::takeDivisor(uint64_t ticksPerMicrosecond) {
    if (ticksPerMicrosecond == 0) return false;
    divisorKnown_ = true;
    if (ticksPerMicrosecond == divisor_) return false;
    divisor_ = ticksPerMicrosecond;
    ++divisorChanges_;
    anchored_ = false;
    return true;
}

uint32_t TraceClock::threadOf(uint64_t id) {
    if (lastThread_ < threads_.size() && threads_[lastThread_].id == id) return lastThread_;
    const auto [found, isNew] = threadById_.try_emplace(id, static_cast<uint32_t>(threads_.size()));
    if (isNew) threads_.push_back({id, std::numeric_limits<Nanoseconds>::min()});
    lastThread_ = found->second;
    return lastThread_;
}

Nanoseconds TraceClock::timeOf(uint64_t tick) {
    if (!anchored_) {
        anchorTick_ = tick;
        anchor_ = latest_;
        anchored_ = true;
    }
    const Nanoseconds since = nanosecondsOf(tick, anchorTick_, divisor_);
    Nanoseconds time = 0;
    if (!__builtin_add_overflow(anchor_, since, &time)) return time;
    return saturated(Wide{anchor_} + since);
}

TraceClock::Reading TraceClock::read(const TraceRecord& record) {
    if (!divisorKnown_) assumedDivisor_ = true;
    Reading reading{.time = timeOf(record.timestamp),
                    .thread = threadOf(record.arg5),
                    .restarted = false,
                    .latestBefore = latest_};
    Nanoseconds& last = threads_[reading.thread].last;
    if (reading.time < latest_) {
        if (reading.time < last || reading.time < latest_ - kMostDisorder) {
            ++stepsBack_;
            anchored_ = false;
            reading.restarted = true;
            reading.time = timeOf(record.timestamp);
        } else {
            ++disordered_;
        }
    }
    last = reading.time;
    latest_ = std::max(latest_, reading.time);
    return reading;
}

}  // namespace sonaprobe
