// The time of each record of a trace, in nanoseconds, and the threads that its records come from.

#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/keyed_hash.h"
#include "record/trace_record.h"

namespace sonaprobe {

// They saturate.
using Nanoseconds = int64_t;

inline Nanoseconds saturated(Wide nanoseconds) {
    constexpr Wide kLeast = std::numeric_limits<Nanoseconds>::min();
    constexpr Wide kMost = std::numeric_limits<Nanoseconds>::max();
    return static_cast<Nanoseconds>(std::clamp(nanoseconds, kLeast, kMost));
}

// The sum of two.
inline Nanoseconds saturatedSum(Nanoseconds one, Nanoseconds other) {
    Nanoseconds sum = 0;
    return __builtin_add_overflow(one, other, &sum) ? saturated(Wide{one} + other) : sum;
}

// From one tick of the trace clock to a later one, rounded down; below 0 where it is an earlier
// one. The divisor is not 0.
inline Nanoseconds nanosecondsOf(uint64_t laterTick, uint64_t earlierTick,
                                 uint64_t ticksPerMicrosecond) {
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

class TraceClock {
  public:
    struct Reading {
        Nanoseconds time;  // from the first record; never less than before on the same thread
        uint32_t thread;   // threads are numbered in the order in which they appear
        // The clock stepped back here, so calls that are open end at `latestBefore`, and time goes
        // on from there.
        bool restarted;
        Nanoseconds latestBefore;
    };

    // A divisor slot's value; 0 is ignored. Whether another value takes over: calls that are open
    // end at latest(), and time goes on from there.
    bool takeDivisor(uint64_t ticksPerMicrosecond);

    // The next record of the file. Records of other threads may be somewhat out of order.
    Reading read(const TraceRecord& record) {
        if (!divisorKnown_) assumedDivisor_ = true;
        Reading reading{.time = timeOf(record.timestamp),
                        .thread = threadOf(record.arg5),
                        .restarted = false,
                        .latestBefore = latest_};
        Nanoseconds& last = threads_[reading.thread].last;
        if (reading.time < latest_) takeEarlier(reading, record.timestamp, last);
        last = reading.time;
        latest_ = std::max(latest_, reading.time);
        return reading;
    }

    // The trace clock's own time of a record just read.
    Nanoseconds kernelTime(const TraceRecord& record) const {
        return nanosecondsOf(record.timestamp, 0, divisor_);
    }

    uint64_t ticksPerMicrosecond() const { return divisor_; }

    // Whether a record was read before any divisor: 1000 ticks a microsecond are assumed there.
    bool assumedDivisor() const { return assumedDivisor_; }

    // The latest time of all records so far.
    Nanoseconds latest() const { return latest_; }

    uint64_t stepsBack() const { return stepsBack_; }

    // How often another divisor's value took over.
    uint64_t divisorChanges() const { return divisorChanges_; }

    // Records earlier than the latest that are no step back, as several processors write them.
    uint64_t disordered() const { return disordered_; }

    size_t threads() const { return threads_.size(); }
    uint64_t threadId(uint32_t thread) const { return threads_[thread].id; }

    // What is in force where no divisor is.
    static constexpr uint64_t kAssumedDivisor = 1000;

    // By more than this no record comes late without a step back.
    static constexpr Nanoseconds kMostDisorder = 1'000'000'000;

  private:
    struct Thread {
        uint64_t id;
        Nanoseconds last;
    };
    struct Hash {
        size_t operator()(uint64_t id) const { return keyedHash(id, 0); }
    };

    uint32_t threadOf(uint64_t id) {
        const bool sameAgain = lastThread_ < threads_.size() && threads_[lastThread_].id == id;
        return sameAgain ? lastThread_ : otherThread(id);
    }
    Nanoseconds timeOf(uint64_t tick) {
        if (!anchored_) {
            anchorTick_ = tick;
            anchor_ = latest_;
            anchored_ = true;
        }
        return saturatedSum(anchor_, nanosecondsOf(tick, anchorTick_, divisor_));
    }

    uint32_t otherThread(uint64_t id);
    void takeEarlier(Reading& reading, uint64_t tick, Nanoseconds lastOfThread);

    uint64_t divisor_ = kAssumedDivisor;
    bool divisorKnown_ = false;
    bool assumedDivisor_ = false;
    bool anchored_ = false;
    uint64_t anchorTick_ = 0;  // the time was anchor_ at this tick
    Nanoseconds anchor_ = 0;
    Nanoseconds latest_ = 0;
    uint64_t stepsBack_ = 0;
    uint64_t divisorChanges_ = 0;
    uint64_t disordered_ = 0;
    uint32_t lastThread_ = 0;
    std::vector<Thread> threads_;
    tsl::robin_map<uint64_t, uint32_t, Hash> threadById_;
};

}  // namespace sonaprobe
