// The records of a trace, one after the other, with their slots and times.

#pragma once

#include "analysis/call_tracker.h"
#include "analysis/slot.h"
#include "analysis/trace_clock.h"
#include "scope/input.h"

namespace sonaprobe::scope {

// Visits records in the order of the file, as long as visit(record, slot, reading) says so, with
// the slot's number and the clock's reading. Divisors go to the clock; invalid and empty slots are
// passed over.
template <class Visit>
void whileRecords(Input& input, TraceClock& clock, const Visit& visit) {
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        uint64_t number = input.firstSlot();
        for (const TraceRecord& slot : slots) {
            const SlotKind kind = kindOf(slot);
            if (kind == SlotKind::divisor) clock.takeDivisor(slot.timestamp);
            if (kind == SlotKind::record && !visit(slot, number, clock.read(slot))) return;
            ++number;
        }
    }
}

// The same of all records.
template <class Visit>
void forEachRecord(Input& input, TraceClock& clock, const Visit& visit) {
    whileRecords(input, clock, [&](const TraceRecord& record, uint64_t slot, auto reading) {
        visit(record, slot, reading);
        return true;
    });
}

// Takes each slot into the tracker, whose sink hears of the calls, and then visits the records:
// visit(record, moment). What is wrong with the input is left to be said.
template <class Sink, class Visit>
void trackCalls(Input& input, CallTrackerOf<Sink>& tracker, const Visit& visit) {
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) {
            const Moment* const moment = tracker.take(slot);
            if (moment != nullptr) visit(slot, *moment);
        }
    }
    tracker.finish();
}

}  // namespace sonaprobe::scope
