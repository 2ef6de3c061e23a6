// Calls open and close.

#include "analysis/call_tracker.h"

#include "analysis/event_traits.h"
#include "analysis/slot.h"

namespace sonaprobe {

const Moment* CallTracker::take(const TraceRecord& slot) {
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
    if (reading.thread == threads_.size()) threads_.emplace_back();

    switch (qualifierOf(slot.debugid)) {
        case Qualifier::start: takeStart(slot); break;
        case Qualifier::end: takeEnd(slot); break;
        case Qualifier::none:
        case Qualifier::both: sink_->point(slot, moment_); break;
    }
    return &moment_;
}

void CallTracker::finish() {
    moment_.slot = slots_;
    closeAll(CallEnd::unfinished, clock_.latest());
}

void CallTracker::takeStart(const TraceRecord& record) {
    const uint32_t code = codeOf(record.debugid);
    if (startsArePoints(code)) {
        sink_->point(record, moment_);
        return;
    }
    if (!recurses(code)) {
        const auto before = innermostOf_.find(Key{0, moment_.thread, code});
        if (before != innermostOf_.end()) {
            const uint32_t frame = before->second;
            const Closing closing{CallEnd::cutOff, moment_.time, moment_.slot};
            closeDownTo(frame, closing);
            close(moment_.thread, closing);
        }
    }
    open(record);
}

void CallTracker::takeEnd(const TraceRecord& record) {
    const Key key{objectOf(record), moment_.thread, codeOf(record.debugid)};
    const uint32_t innermost = threads_[moment_.thread].innermost;
    if (innermost == kNone || keyOf(frames_[innermost].call) != key) {
        const auto match = innermostOf_.find(key);
        if (match == innermostOf_.end()) {
            sink_->orphanEnd(record, moment_);
            return;
        }
        closeDownTo(match->second, {CallEnd::cutOff, moment_.time, moment_.slot});
    }
    close(moment_.thread, {CallEnd::finished, moment_.time, moment_.slot, &record});
}

void CallTracker::open(const TraceRecord& record) {
    Thread& thread = threads_[moment_.thread];
    uint32_t place = static_cast<uint32_t>(frames_.size());
    if (unused_.empty()) {
        frames_.emplace_back();
    } else {
        place = unused_.back();
        unused_.pop_back();
    }
    const Call* const parent = callOf(thread.innermost);
    const Key key{objectOf(record), moment_.thread, codeOf(record.debugid)};
    Frame& frame = frames_[place];
    frame.call = {.start = moment_.time,
                  .startSlot = moment_.slot,
                  .object = key.object,
                  .code = key.code,
                  .cpu = record.cpuid,
                  .thread = key.thread,
                  .depth = parent == nullptr ? 0 : parent->depth + 1};
    frame.parent = thread.innermost;
    const auto [same, isFirst] = innermostOf_.try_emplace(key, place);
    frame.sameBefore = isFirst ? kNone : same->second;
    same.value() = place;
    if (parent == nullptr) {
        thread.placeInBusy = static_cast<uint32_t>(busy_.size());
        busy_.push_back(moment_.thread);
    }
    thread.innermost = place;
    frame.call.tag = sink_->opened(record, frame.call, parent);
}

// The innermost call of the thread.
void CallTracker::close(uint32_t threadNumber, const Closing& closing) {
    Thread& thread = threads_[threadNumber];
    const uint32_t place = thread.innermost;
    const Frame& frame = frames_[place];
    const Key key = keyOf(frame.call);
    if (frame.sameBefore == kNone) {
        innermostOf_.erase(key);
    } else {
        innermostOf_.find(key).value() = frame.sameBefore;
    }
    thread.innermost = frame.parent;
    if (frame.parent == kNone) {
        busy_[thread.placeInBusy] = busy_.back();
        threads_[busy_.back()].placeInBusy = thread.placeInBusy;
        busy_.pop_back();
    } else {
        Nanoseconds& inside = frames_[frame.parent].call.inside;
        inside = saturatedSum(inside, closing.lengthOf(frame.call));
    }
    sink_->closed(frame.call, callOf(frame.parent), closing);
    unused_.push_back(place);
}

// All calls of the moment's thread that stand above the frame.
void CallTracker::closeDownTo(uint32_t frame, const Closing& closing) {
    while (threads_[moment_.thread].innermost != frame) close(moment_.thread, closing);
}

void CallTracker::closeAll(CallEnd how, Nanoseconds time) {
    while (!busy_.empty()) close(busy_.back(), {how, time, moment_.slot});
}

}  // namespace sonaprobe
