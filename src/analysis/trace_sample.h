// What is kept of a trace to compare it with another: of each event how often, when, how long, and
// how often it failed.

#pragma once

#include <array>
#include <cstdint>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/call_tracker.h"

namespace sonaprobe {

// Counts over time, in stretches that double in length as the trace goes on.
class TimeCounts {
  public:
    static constexpr size_t kStretches = 64;

    // Adds one at a time after `begin`, which must be the same for all.
    void add(Nanoseconds sinceBegin);

    // In stretches that are at least `length` long; a doubling of kFirstLength.
    void lengthen(Nanoseconds length);

    static constexpr Nanoseconds kFirstLength = 1'000'000;
    Nanoseconds length() const { return length_; }
    const std::array<double, kStretches>& counts() const { return counts_; }

  private:
    Nanoseconds length_ = kFirstLength;
    std::array<double, kStretches> counts_{};
};

struct EventSample {
    uint32_t code = 0;
    uint64_t calls = 0;
    uint64_t finished = 0;
    uint64_t points = 0;
    uint64_t failures = 0;
    Nanoseconds self = 0;             // of finished calls
    std::vector<uint64_t> selfTimes;  // of every keptOneOf-th of them, in the order of their ends
    uint64_t keptOneOf = 1;
    TimeCounts occurrences;  // of calls and points
    TimeCounts failed;

    uint64_t count() const { return calls + points; }
};

class TraceSample {
  public:
    // Of an event's calls so many times are kept at most.
    static constexpr size_t kMostTimes = size_t{1} << 20;

    // Selected records, in the order of the trace.
    void take(Nanoseconds time);

    void addCall(const Call& call, const Closing& closing);
    void addPoint(uint32_t code, Nanoseconds time);
    void addFailure(uint32_t code, Nanoseconds time);

    // From the earliest selected record to the latest.
    Nanoseconds span() const { return saturatedDifference(last_, first_); }
    uint64_t records() const { return records_; }

    const std::vector<EventSample>& events() const { return events_; }

    // Null where the trace has none of the event.
    const EventSample* find(uint32_t code) const;

  private:
    struct Hash {
        size_t operator()(uint32_t code) const { return keyedHash(code, 3); }
    };

    EventSample& eventOf(uint32_t code);
    Nanoseconds sinceBegin(Nanoseconds time) const;

    uint64_t records_ = 0;
    Nanoseconds first_ = 0;
    Nanoseconds last_ = 0;
    std::vector<EventSample> events_;
    tsl::robin_map<uint32_t, uint32_t, Hash> eventByCode_;
};

}  // namespace sonaprobe
