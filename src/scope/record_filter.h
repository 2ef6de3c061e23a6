// Asks a selection about a trace's records, in the time that the user speaks of.

#pragma once

#include "analysis/call_tracker.h"
#include "analysis/selection.h"
#include "scope/options.h"

namespace sonaprobe::scope {

class RecordFilter {
  public:
    // All must outlive this.
    RecordFilter(const Selection& selection, const TraceOptions& trace, const TraceClock& clock)
        : selection_(&selection), clock_(&clock), kernelTime_(trace.kernelTime) {}

    // Of the record that the clock has just read.
    bool contains(const TraceRecord& record, uint64_t slot, Nanoseconds time) const {
        return selection_->isAll() || selection_->contains(record, slot, shown(record, time));
    }

    // Whether the record that ended a call is selected; that of a call which none ended is not.
    bool containsEnd(const Closing& closing) const {
        return closing.end != nullptr && contains(*closing.end, closing.slot, closing.time);
    }

    // The time that the user sees.
    Nanoseconds shown(const TraceRecord& record, Nanoseconds time) const {
        return kernelTime_ ? clock_->kernelTime(record) : time;
    }

  private:
    const Selection* selection_;
    const TraceClock* clock_;
    bool kernelTime_;
};

}  // namespace sonaprobe::scope
