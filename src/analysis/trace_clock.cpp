// The trace clock's rarer ways: another divisor, another thread, a step back.

#include "analysis/trace_clock.h"

#include <algorithm>
#include <limits>

namespace sonaprobe {

bool TraceClock::takeDivisor(uint64_t ticksPerMicrosecond) {
    if (ticksPerMicrosecond == 0) return false;
    divisorKnown_ = true;
    if (ticksPerMicrosecond == rate_.ticksPerMicrosecond()) return false;
    rate_ = TickRate(ticksPerMicrosecond);
    ++divisorChanges_;
    anchored_ = false;
    return true;
}

uint32_t TraceClock::searchThread(uint64_t id) {
    const auto [found, isNew] = threadById_.try_emplace(id, static_cast<uint32_t>(threads_.size()));
    if (isNew) threads_.push_back({id, std::numeric_limits<Nanoseconds>::min()});
    return found->second;
}

// Time goes on at the latest.
void TraceClock::anchorAt(uint64_t tick) {
    anchorTick_ = tick;
    anchor_ = latest_;
    anchored_ = true;
}

// A record earlier than the latest: it comes late, or the clock stepped back.
TraceClock::Reading TraceClock::readEarlier(const TraceRecord& record, Nanoseconds time,
                                            uint32_t thread) {
    Reading reading{time, thread, false, latest_};
    Nanoseconds& last = threads_[thread].last;
    if (time >= last && time >= latest_ - kMostDisorder) {
        ++disordered_;
    } else {
        ++stepsBack_;
        anchored_ = false;
        reading.restarted = true;
        reading.time = timeOf(record.timestamp);
    }
    last = reading.time;
    latest_ = std::max(latest_, reading.time);
    return reading;
}

}  // namespace sonaprobe
