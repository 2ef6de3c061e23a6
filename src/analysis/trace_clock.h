// The time of each record of a trace, in nanoseconds, and the threads that its records come from.

#pragma once

#include <cstdint>
#include <tsl/robin_map.h>
#include <utility>
#include <vector>

#include "analysis/keyed_hash.h"
#include "analysis/recently_found.h"
#include "analysis/tick_rate.h"
#include "record/trace_record.h"

namespace sonaprobe {

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
        const Nanoseconds time = timeOf(record.timestamp);
        const uint32_t thread = threadOf(record.arg5);
        if (time < latest_) [[unlikely]]
            return readEarlier(record, time, thread);
        threads_[thread].last = time;
        return {time, thread, false, std::exchange(latest_, time)};
    }

    // The trace clock's own time of a record just read.
    Nanoseconds kernelTime(const TraceRecord& record) const {
        return rate_.between(0, record.timestamp);
    }

    // In force.
    const TickRate& rate() const { return rate_; }
    uint64_t ticksPerMicrosecond() const { return rate_.ticksPerMicrosecond(); }

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
        return recent_.find(id, id, [this, id] { return searchThread(id); });
    }
    Nanoseconds timeOf(uint64_t tick) {
        if (!anchored_) [[unlikely]]
            anchorAt(tick);
        return saturatedSum(anchor_, rate_.between(anchorTick_, tick));
    }

    uint32_t searchThread(uint64_t id);
    void anchorAt(uint64_t tick);
    Reading readEarlier(const TraceRecord& record, Nanoseconds time, uint32_t thread);

    TickRate rate_{kAssumedDivisor};
    bool divisorKnown_ = false;
    bool assumedDivisor_ = false;
    bool anchored_ = false;
    uint64_t anchorTick_ = 0;  // the time was anchor_ at this tick
    Nanoseconds anchor_ = 0;
    Nanoseconds latest_ = 0;
    uint64_t stepsBack_ = 0;
    uint64_t divisorChanges_ = 0;
    uint64_t disordered_ = 0;
    RecentlyFound<uint64_t, uint32_t, 8> recent_;  // threads by id
    std::vector<Thread> threads_;
    tsl::robin_map<uint64_t, uint32_t, Hash> threadById_;
};

}  // namespace sonaprobe
