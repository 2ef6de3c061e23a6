// Signs of missing records. Each names two slots with the gap between them; signs whose slots
// overlap are taken for one gap, which then lies between the closest of them.

#include "analysis/call_check.h"

#include <algorithm>

#include "analysis/event_traits.h"

namespace sonaprobe {

namespace {

// The tag of a call that traces both ends.
constexpr uint32_t kProvable = 1;

constexpr uint64_t kLeastRegular = 4;            // cycles, before a late one is a sign
constexpr Nanoseconds kLatePeriods = 8;          // so many periods late
constexpr Nanoseconds kLeastLate = 100'000'000;  // and this

}  // namespace

void CallCheck::take(const TraceRecord& slot, uint64_t number) {
    tracker_.goOnAt(number);
    record_ = &slot;
    const Moment* const moment = tracker_.take(slot);
    if (moment != nullptr) silences_.take(number, moment->time);
    epoch_ = epochNow();
}

// Signs of before a step back of the clock, or of another divisor's time, prove nothing after it.
uint64_t CallCheck::epochNow() const {
    return tracker_.clock().stepsBack() + tracker_.clock().divisorChanges();
}

// The cycle that ended last on the thread, null where that proves nothing.
const CallCheck::Cycle* CallCheck::cycleBefore(const Thread& thread) const {
    return thread.ended && thread.ended->epoch == epochNow() ? &*thread.ended : nullptr;
}

uint32_t CallCheck::opened(const TraceRecord& record, const Call& call, const Call* /*parent*/) {
    ++counts_.opened;
    Thread& thread = threadAt(call.thread);
    const bool provable = tracesBothEnds(call.code);
    if (provable) thread.provable.push_back(call.startSlot);
    if (call.code == kIoCycle) beginCycle(record, call);
    if (call.code == kIoThread) thread.ended.reset();
    return provable ? kProvable : 0;
}

void CallCheck::closed(const Call& call, const Call* /*parent*/, const Closing& closing) {
    Thread& thread = threadAt(call.thread);
    const bool provable = call.tag == kProvable;
    if (provable) thread.provable.pop_back();
    switch (closing.how) {
        case CallEnd::finished:
            ++counts_.finished;
            if (call.code == kIoCycle) endCycle(call, closing);
            if (call.code == kIoThread) thread.ended.reset();
            break;
        case CallEnd::unfinished: ++counts_.unfinished; break;
        case CallEnd::cutOff:
            ++counts_.cutOff;
            if (!provable || epochNow() != epoch_) break;
            const bool byEnd = qualifierOf(record_->debugid) == Qualifier::end;
            add(call.startSlot, closing.slot,
                byEnd ? MissingSign::cutOffByEnd : MissingSign::cutOffByStart, call.code);
            break;
    }
}

void CallCheck::point(const TraceRecord& record, const Moment& moment) {
    if (codeOf(record.debugid) != kOverload) return;
    Thread& thread = threadAt(moment.thread);
    thread.open.overloaded = true;
    if (thread.ended) thread.ended->overloaded = true;
}

void CallCheck::orphanEnd(const TraceRecord& record, const Moment& moment) {
    ++counts_.orphanEnds;
    const uint32_t code = codeOf(record.debugid);
    if (!tracesBothEnds(code)) return;
    const Thread& thread = threadAt(moment.thread);
    // The start is missing, after that of the open call; or else the open call's end is.
    const uint64_t openSince = thread.provable.empty() ? 0 : thread.provable.back();
    // Cycles do not overlap: the start is missing after the end of the one before.
    const Cycle* const before = code == kIoCycle || code == kClient ? cycleBefore(thread) : nullptr;
    if (before != nullptr && before->slot > openSince) {
        add(before->slot, moment.slot, MissingSign::orphanCycle, code);
    } else if (!thread.provable.empty()) {
        add(openSince, moment.slot, MissingSign::orphanEnd, code);
    }
}

void CallCheck::beginCycle(const TraceRecord& start, const Call& call) {
    Thread& thread = threadAt(call.thread);
    Cycle& cycle = thread.open;
    silences_.take(call.startSlot, call.start);
    cycle = {.sample = start.arg1, .buffer = start.arg3, .start = call.start};
    const Cycle* const before = cycleBefore(thread);
    if (before == nullptr || before->overloaded) return;
    if (cycle.sample != before->nextSample) {
        if (before->regular == 0) return;
        addSkip(cycle.sample - before->nextSample, *before, before->slot, call.startSlot);
        return;
    }
    cycle.period = saturatedDifference(call.start, before->start);
    cycle.regular = before->regular + 1;
    const Nanoseconds late = saturatedDifference(call.start, before->end);
    if (before->regular >= kLeastRegular && late > kLeastLate &&
        late / kLatePeriods > before->period) {
        add(before->slot, call.startSlot, MissingSign::clock, call.code);
    }
}

void CallCheck::endCycle(const Call& call, const Closing& closing) {
    Thread& thread = threadAt(call.thread);
    Cycle& cycle = thread.open;
    silences_.take(closing.slot, closing.time);
    cycle.slot = closing.slot;
    cycle.end = closing.time;
    cycle.nextSample = closing.end->arg1;
    cycle.epoch = epochNow();
    // Without an overload, what its end tells is the sample time one buffer on.
    if (!cycle.overloaded && cycle.regular > 0) {
        addSkip(cycle.nextSample - cycle.sample - cycle.buffer, cycle, call.startSlot,
                closing.slot);
    }
    thread.ended = cycle;
    thread.ended->overloaded = false;
}

// So many samples are left out between two slots: cycles are missing if these are whole buffers.
// All threads are silent where their records are missing, for longer than between two cycles if
// several are.
void CallCheck::addSkip(uint64_t samples, const Cycle& cycle, uint64_t after, uint64_t before) {
    constexpr uint64_t kMostBuffers = uint64_t{1} << 20;  // more is another position, or none
    if (samples == 0 || cycle.buffer == 0 || samples % cycle.buffer != 0) return;
    const uint64_t buffers = samples / cycle.buffer;
    if (buffers > kMostBuffers) return;
    const Silence* const silence = silences_.longestSince(after);
    const Wide least = Wide{buffers - 1} * cycle.period;
    if (buffers > 1 && cycle.period > 0 && silence != nullptr && silence->length >= least) {
        after = silence->after;
        before = silence->before;
    }
    add(after, before, MissingSign::sampleTime, kIoCycle);
}

// Signs come in the order of the slots before which the gap lies, or nearly.
void CallCheck::add(uint64_t after, uint64_t before, MissingSign sign, uint32_t code) {
    if (!missing_.empty() && after < missing_.back().before && missing_.back().after < before) {
        MissingStretch& stretch = missing_.back();
        stretch.after = std::max(stretch.after, after);
        stretch.before = std::min(stretch.before, before);
        ++stretch.signs;
    } else if (missing_.size() < kMostStretches) {
        missing_.push_back({after, before, sign, code, 1});
    }
}

}  // namespace sonaprobe
