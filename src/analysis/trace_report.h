// What is in a trace file, and what is wrong with it, in one pass.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>

#include "analysis/call_check.h"
#include "analysis/event_tally.h"
#include "analysis/slot_check.h"
#include "analysis/tally.h"

namespace sonaprobe {

class TraceReport {
  public:
    // Without calls there are no counts of calls and no signs of missing records; faster.
    explicit TraceReport(bool withCalls);

    void take(const Found& found);
    void take(const RecordRun& run);
    void finish();

    const SlotCheck& slots() const { return slots_; }
    const Findings& findings() const { return slots_.findings(); }
    const TraceClock& clock() const { return calls_ ? calls_->clock() : clock_; }

    // From the first record to the latest.
    Nanoseconds span() const { return clock().latest(); }

    // The clock's own time of the first record.
    Nanoseconds begin() const { return begin_; }

    // The values of divisors, 0 aside, each with the slot in which it stands first.
    const std::map<uint64_t, uint64_t>& divisors() const { return divisors_; }
    std::map<uint32_t, uint64_t> recordsOfProcessor() const { return processors_.counts(); }

    EventCounts events() const { return events_.counts(); }

    // Null without calls.
    const CallCounts* calls() const { return calls_ ? &calls_->counts() : nullptr; }

  private:
    void take(std::span<const TraceRecord> records, uint64_t slot);
    void count(const TraceRecord& record) {
        processors_.add(record.cpuid);
        events_.add(record);
    }
    void takeStepBack(const TraceRecord& record, uint64_t slot);

    SlotCheck slots_;
    std::optional<CallCheck> calls_;
    TraceClock clock_;  // where there is no check of calls
    bool isFirst_ = true;
    Nanoseconds begin_ = 0;
    uint64_t latestTick_ = 0;
    uint64_t stepsBack_ = 0;
    std::map<uint64_t, uint64_t> divisors_;
    Tally processors_;
    EventTally events_;
};

}  // namespace sonaprobe
