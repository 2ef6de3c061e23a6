// Which start record an end record closes: calls, in one pass over a trace's slots.

#pragma once

#include <cstdint>

#include "analysis/call.h"
#include "analysis/event_traits.h"
#include "analysis/open_calls.h"
#include "analysis/slot.h"
#include "analysis/trace_clock.h"

namespace sonaprobe {

// Who wants to know. Calls on one thread close from the innermost outwards, and before the start
// that cuts them off opens.
class CallSink {
  public:
    virtual ~CallSink() = default;

    // The record opens a call inside `parent`, null where it is outermost; what this gives back is
    // the call's tag.
    virtual uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) = 0;
    virtual void closed(const Call& call, const Call* parent, const Closing& closing) = 0;
    virtual void point(const TraceRecord& record, const Moment& moment) = 0;
    virtual void orphanEnd(const TraceRecord& record, const Moment& moment) = 0;
};

// A Sink is CallSink, or any class with its functions, which the compiler can then inline. Memory
// grows with the calls that are open at once and with threads. A record takes the same time
// whatever is open.
template <class Sink>
class CallTrackerOf {
  public:
    explicit CallTrackerOf(Sink& sink) : sink_(&sink) {}

    // The next slot of the file, of whatever kind; the moment of a record, null for what is none.
    const Moment* take(const TraceRecord& slot) {
        moment_.slot = slots_++;
        switch (kindOf(slot)) {
            case SlotKind::divisor:
                if (clock_.takeDivisor(slot.timestamp)) closeAll(CallEnd::cutOff, clock_.latest());
                return nullptr;
            case SlotKind::invalid:
            case SlotKind::empty: return nullptr;
            case SlotKind::record: break;
        }
        const TraceClock::Reading reading = clock_.read(slot);
        if (reading.restarted) closeAll(CallEnd::cutOff, reading.latestBefore);
        moment_.time = reading.time;
        moment_.thread = reading.thread;
        if (reading.thread == open_.threads()) open_.addThread();

        switch (qualifierOf(slot.debugid)) {
            case Qualifier::start: takeStart(slot); break;
            case Qualifier::end: takeEnd(slot); break;
            case Qualifier::none:
            case Qualifier::both: sink_->point(slot, moment_); break;
        }
        return &moment_;
    }

    // The number of the next slot, where some were left out.
    void goOnAt(uint64_t slot) { slots_ = slot; }

    // After the last slot: closes what is unfinished.
    void finish() {
        moment_.slot = slots_;
        closeAll(CallEnd::unfinished, clock_.latest());
    }

    const TraceClock& clock() const { return clock_; }
    uint64_t slots() const { return slots_; }
    const OpenCalls& openCalls() const { return open_; }

  private:
    OpenCalls::Key keyOf(const TraceRecord& record) const {
        return {objectOf(record), moment_.thread, codeOf(record.debugid)};
    }

    void takeStart(const TraceRecord& record) {
        const OpenCalls::Key key = keyOf(record);
        if (startsArePoints(key.code)) {
            sink_->point(record, moment_);
            return;
        }
        if (!recurses(key.code)) {
            endAt(open_.find(key), {CallEnd::cutOff, moment_.time, moment_.slot});
        }
        const uint32_t parent = open_.innermostOf(key.thread);
        Call& call = open_.push({.start = moment_.time,
                                 .startSlot = moment_.slot,
                                 .object = key.object,
                                 .code = key.code,
                                 .cpu = record.cpuid,
                                 .thread = key.thread});
        call.tag = sink_->opened(record, call, open_.callAt(parent));
    }

    void takeEnd(const TraceRecord& record) {
        const uint32_t match = open_.find(keyOf(record));
        if (match == OpenCalls::kNone) {
            sink_->orphanEnd(record, moment_);
        } else {
            endAt(match, {CallEnd::finished, moment_.time, moment_.slot, &record});
        }
    }

    // Ends a call of the moment's thread, and cuts off those inside it; does nothing for kNone.
    void endAt(uint32_t number, const Closing& closing) {
        if (number == OpenCalls::kNone) return;
        while (open_.innermostOf(moment_.thread) != number) {
            close(moment_.thread, {CallEnd::cutOff, moment_.time, moment_.slot});
        }
        close(moment_.thread, closing);
    }

    void close(uint32_t thread, const Closing& closing) {
        const Call& call = open_.pop(thread);
        Call* const parent = open_.callAt(open_.innermostOf(thread));
        if (parent != nullptr) {
            addTo(parent->inside, closing.lengthOf(call));
        }
        sink_->closed(call, parent, closing);
    }

    void closeAll(CallEnd how, Nanoseconds time) {
        while (!open_.busy().empty()) close(open_.busy().back(), {how, time, moment_.slot});
    }

    Sink* sink_;
    TraceClock clock_;
    uint64_t slots_ = 0;
    Moment moment_;
    OpenCalls open_;
};

using CallTracker = CallTrackerOf<CallSink>;
extern template class CallTrackerOf<CallSink>;

}  // namespace sonaprobe
