// The time of each record of a trace, in nanoseconds.

#pragma once

#include <cstdint>
#include <unordered_map>

#include "trace/trace_record.h"

namespace sonaprobe {

// They saturate.
using Nanoseconds = int64_t;

// From one tick of the trace clock to a later one; below 0 where it is an earlier one. The divisor
// is not 0.
Nanoseconds nanosecondsOf(uint64_t laterTick, uint64_t earlierTick, uint64_t ticksPerMicrosecond);

class TraceClock {
  public:
    struct Reading {
        Nanoseconds time;  // from the first record
        // The clock stepped back here, or another divisor took over: calls that are open end at
        // `latestBefore`, and time goes on from there.
        bool restarted;
        Nanoseconds latestBefore;
    };

    // A divisor slot's value; 0 is ignored.
    void takeDivisor(uint64_t ticksPerMicrosecond);

    // The next record of the file. Records of other threads may be somewhat out of order.
    Reading read(const TraceRecord& record);

    // The trace clock's own time of a record just read.
    Nanoseconds kernelTime(const TraceRecord& record) const {
        return nanosecondsOf(record.timestamp, 0, divisor_);
    }

    uint64_t ticksPerMicrosecond() const { return divisor_; }

    // Whether a record was read before any divisor: 1000 ticks a microsecond are assumed there.
    bool assumedDivisor() const { return assumedDivisor_; }

    Nanoseconds latest() const { return latest_; }

  private:
    static constexpr uint64_t kAssumedDivisor = 1000;

    bool stepsBack(const TraceRecord& record) const;

    uint64_t divisor_ = kAssumedDivisor;
    bool divisorKnown_ = false;
    bool assumedDivisor_ = false;
    bool divisorChanged_ = false;
    bool begun_ = false;
    uint64_t baseTick_ = 0;  // the time was base_ at this tick
    Nanoseconds base_ = 0;
    uint64_t latestTick_ = 0;
    Nanoseconds latest_ = 0;
    std::unordered_map<uint64_t, uint64_t> lastTickOfThread_;  // since the last restart
};

}  // namespace sonaprobe
