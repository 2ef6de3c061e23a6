// What is in a trace file, and what is wrong with it, in one pass.

#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "analysis/call_check.h"
#include "analysis/slot_check.h"
#include "analysis/tally.h"

namespace sonaprobe {

// What sonaprobe makes of records; together they are all records.
struct OutcomeCounts {
    uint64_t printed = 0;       // under a text of their own; the audio server's with -A
    uint64_t verboseOnly = 0;   // the same, with -v alone
    uint64_t silent = 0;        // known, without a text
    uint64_t unclassified = 0;  // no decoder knows the code
};

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

    // By debug id without event number and qualifier; without class, too, where it is no audio
    // code.
    std::map<uint32_t, uint64_t> recordsOfClass() const { return classes_.counts(); }
    const OutcomeCounts& outcomes() const { return outcomes_; }
    uint64_t points() const { return points_; }

    // Null without calls.
    const CallCounts* calls() const { return calls_ ? &calls_->counts() : nullptr; }

  private:
    void takeRecord(const TraceRecord& record, uint64_t slot);

    SlotCheck slots_;
    std::optional<CallCheck> calls_;
    TraceClock clock_;  // where there is no check of calls
    bool isFirst_ = true;
    Nanoseconds begin_ = 0;
    uint64_t latestTick_ = 0;
    uint64_t stepsBack_ = 0;
    std::map<uint64_t, uint64_t> divisors_;
    Tally processors_;
    Tally classes_;
    OutcomeCounts outcomes_;
    uint64_t points_ = 0;
};

}  // namespace sonaprobe
