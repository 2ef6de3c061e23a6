// How much of a trace an answer is about, and what its times rest on.

#pragma once

#include <algorithm>
#include <cstdint>

#include "analysis/trace_clock.h"
#include "scope/json.h"

namespace sonaprobe::scope {

class TraceSummary {
  public:
    // A selected record's time.
    void take(Nanoseconds time) {
        if (records_++ == 0) first_ = last_ = time;
        first_ = std::min(first_, time);
        last_ = std::max(last_, time);
    }

    uint64_t records() const { return records_; }

    // From the earliest selected record to the latest.
    Nanoseconds span() const { return saturatedDifference(last_, first_); }

    // Adds "records", "span_ns", "ticks_per_microsecond" (of the last divisor), "assumed_divisor",
    // "steps_back" and "disordered" (of the whole trace).
    void addTo(Json& document, const TraceClock& clock) const;

  private:
    uint64_t records_ = 0;
    Nanoseconds first_ = 0;
    Nanoseconds last_ = 0;
};

}  // namespace sonaprobe::scope
