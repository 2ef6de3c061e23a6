// What a line says of its record's place among the calls of its thread.

#pragma once

#include <vector>

#include "analysis/call_tracker.h"

namespace sonaprobe::scope {

// Follows the calls of a trace slot by slot.
class CallView : public CallSink {
  public:
    CallView() : tracker_(*this) {}

    struct Place {
        Nanoseconds time = 0;
        Nanoseconds sinceLast = 0;  // since the record before on the thread
        bool first = true;          // on its thread: there is none before
        uint32_t depth = 0;         // calls around the record
        bool ends = false;          // an end that closes a call
        Nanoseconds duration = 0;   // of that call
    };

    // The place of the next slot's record, null where the slot is none. It holds until the next
    // call.
    const Place* take(const TraceRecord& slot);

    const TraceClock& clock() const { return tracker_.clock(); }

  private:
    struct Thread {
        uint32_t open = 0;
        bool seen = false;
        Nanoseconds last = 0;
    };

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) override;
    void closed(const Call& call, const Call* parent, const Closing& closing) override;
    void point(const TraceRecord&, const Moment&) override {}
    void orphanEnd(const TraceRecord&, const Moment&) override {}
    Thread& threadOf(uint32_t number);

    CallTracker tracker_;
    std::vector<Thread> threads_;
    Place place_;
    bool placed_ = false;  // by the call that the record opens or closes
};

}  // namespace sonaprobe::scope
