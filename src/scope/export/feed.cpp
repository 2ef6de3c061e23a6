// Follows records and calls through a trace.

#include "scope/export/feed.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "scope/record_filter.h"
#include "scope/records.h"
#include "scope/sorted_search.h"

namespace sonaprobe::scope {

namespace {

// Moments of a thread, each later than the one before on it. Programs that work out from times
// alone what lies inside what lose calls, or their depth, where several begin or end at one
// nanosecond: here these are one nanosecond apart, or so much more as a double of that size needs.
// Where calls are cut off at the latest time of all threads, what their own thread does next may be
// earlier: it waits.
class StrictMoments {
  public:
    Nanoseconds next(uint32_t thread, Nanoseconds time) {
        constexpr Nanoseconds kMin = std::numeric_limits<Nanoseconds>::min();
        if (thread >= earliest_.size()) earliest_.resize(thread + 1, kMin);
        const Nanoseconds moment = std::max(time, earliest_[thread]);
        constexpr int kExact = 50;  // bits of whole nanoseconds that microseconds can tell apart
        const Nanoseconds step = 1 + (moment < 0 ? -(moment >> kExact) : moment >> kExact);
        earliest_[thread] = saturatedSum(moment, step);
        return moment;
    }

  private:
    std::vector<Nanoseconds> earliest_;  // by thread: the least that may follow
};

class CallFeed final : private CallSink {
  public:
    CallFeed(const Selection& selection, const TraceOptions& trace, Format& format)
        : format_(&format), tracker_(*this), filter_(selection, trace, tracker_.clock()) {}

    void run(Input& input) {
        trackCalls(input, tracker_, [&](const TraceRecord& record, const Moment& moment) {
            if (!contains(record, moment)) return;
            format_->record(told(record, moment, moment.time));
        });
    }

    const TraceClock& clock() const { return tracker_.clock(); }

  private:
    struct OpenCall {
        TraceRecord start;
        Nanoseconds startTime;
        Nanoseconds placedStart;
        uint64_t order;
        uint32_t note;
        bool selected;
    };

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) override {
        uint32_t tag;
        if (unused_.empty()) {
            tag = static_cast<uint32_t>(open_.size());
            open_.emplace_back();
        } else {
            tag = unused_.back();
            unused_.pop_back();
        }
        const uint32_t above = parent == nullptr ? Format::kNoNote : open_[parent->tag].note;
        OpenCall& opened = open_[tag];
        opened.start = record;
        opened.startTime = filter_.shown(record, call.start);
        opened.placedStart = moments_.next(call.thread, call.start);
        opened.order = order_++;
        opened.selected = filter_.contains(record, call.startSlot, call.start);
        opened.note = format_->opened(record, call, opened.selected, above);
        return tag;
    }

    void closed(const Call& call, const Call* parent, const Closing& closing) override {
        const OpenCall& opened = open_[call.tag];
        const bool endSelected = filter_.containsEnd(closing);
        format_->closed({.call = &call,
                         .parent = parent,
                         .closing = &closing,
                         .start = &opened.start,
                         .startTime = opened.startTime,
                         .selected = opened.selected || endSelected,
                         .endSelected = endSelected,
                         .note = opened.note,
                         .placedStart = opened.placedStart,
                         .placedEnd = moments_.next(call.thread, closing.time),
                         .startOrder = opened.order,
                         .endOrder = order_++,
                         .ticksPerMicrosecond = clock().ticksPerMicrosecond()});
        unused_.push_back(call.tag);
    }

    void point(const TraceRecord& record, const Moment& moment) override {
        if (!contains(record, moment)) return;
        format_->point(told(record, moment, moments_.next(moment.thread, moment.time)));
    }

    void orphanEnd(const TraceRecord& record, const Moment& moment) override {
        if (contains(record, moment)) format_->orphanEnd(told(record, moment, moment.time));
    }

    bool contains(const TraceRecord& record, const Moment& moment) const {
        return filter_.contains(record, moment.slot, moment.time);
    }

    ToldRecord told(const TraceRecord& record, const Moment& moment, Nanoseconds placed) {
        return {.record = &record,
                .event = decode(record),
                .slot = moment.slot,
                .time = filter_.shown(record, moment.time),
                .placed = placed,
                .order = order_++,
                .thread = moment.thread,
                .ticksPerMicrosecond = clock().ticksPerMicrosecond()};
    }

    Format* format_;
    CallTracker tracker_;
    RecordFilter filter_;
    StrictMoments moments_;
    uint64_t order_ = 0;
    std::vector<OpenCall> open_;  // by tag
    std::vector<uint32_t> unused_;
};

}  // namespace

void feedAhead(const Selection& selection, const TraceOptions& trace, Format& format) {
    Input input(trace);
    CallFeed calls(selection, trace, format);
    calls.run(input);
    format.again(calls.clock());
}

void feed(Input& input, const Selection& selection, const TraceOptions& trace, bool withCalls,
          Format& format) {
    if (withCalls) {
        CallFeed calls(selection, trace, format);
        calls.run(input);
        format.finish(calls.clock());
        warnOfDamage(input);
        warnOfAssumedDivisor(input, calls.clock());
        return;
    }
    TraceClock clock;
    const RecordFilter filter(selection, trace, clock);
    forEachRecord(input, clock, [&](const TraceRecord& record, uint64_t slot, auto reading) {
        if (!filter.contains(record, slot, reading.time)) return;
        format.record({.record = &record,
                       .event = decode(record),
                       .slot = slot,
                       .time = filter.shown(record, reading.time),
                       .placed = reading.time,
                       .order = slot,
                       .thread = reading.thread,
                       .ticksPerMicrosecond = clock.ticksPerMicrosecond()});
    });
    format.finish(clock);
    confirmSorted(input, clock);
    warnOfDamage(input);
    warnOfAssumedDivisor(input, clock);
}

}  // namespace sonaprobe::scope
