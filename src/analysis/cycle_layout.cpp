// Lays out the time of a cycle.

#include "analysis/cycle_layout.h"

#include <algorithm>
#include <map>

namespace sonaprobe {

CycleLayout layOutCycle(const TimedThread& timed, const Scene& scene, size_t number,
                        Nanoseconds until) {
    const StableList<IoCycle>& cycles = timed.io->cycles;
    const IoCycle& cycle = cycles[number];
    // Where the end of the cycle before is missing, the line of the cycles before it tells as well.
    const auto due =
        cycle.hasDue ? std::optional(cycle.due) : timed.timeOf(cycle.sample, cycle.begin);
    CycleLayout layout{.cycle = &cycle, .number = number, .dueKnown = due.has_value()};
    layout.due = due.value_or(cycle.begin);
    layout.deadline = layout.due + cycle.budget;
    layout.until = cycle.finished ? std::min(until, cycle.end) : until;

    std::map<const SeenCall*, OwnerShare> shares;
    const auto add = [&](const SeenCall* call, OwnerKey owner, const Silence& stretch) {
        OwnerShare& share = shares[call];
        share.owner = owner;
        share.call = call;
        share.time += stretch.length();
        if (stretch.length() >= share.silence.length()) share.silence = stretch;
    };
    // The thread's calls in the cycle, and its clients by number.
    std::vector<const SeenCall*> calls;
    std::map<const SeenCall*, OwnerKey> keys;
    uint32_t clients = 0;
    for (const SeenCall& call : scene.calls) {
        if (call.thread != timed.io->thread || call.startSlot <= cycle.beginSlot) continue;
        if (call.start > layout.until) break;
        calls.push_back(&call);
        keys[&call] = call.code == kClient ? clientKey(clients++) : callKey(call.code);
    }
    const SeenRecord* before = nullptr;
    for (const SeenRecord& record : scene.records) {
        if (record.thread != timed.io->thread || record.slot < cycle.beginSlot) continue;
        if (record.time > layout.until) break;
        if (before != nullptr) {
            const SeenCall* innermost = nullptr;
            for (const SeenCall* call : calls) {
                if (call->startSlot > before->slot || call->endSlot < record.slot) continue;
                if (innermost == nullptr || call->depth > innermost->depth) innermost = call;
            }
            add(innermost, innermost == nullptr ? kCycleItself : keys[innermost],
                {before->time, record.time, before->slot, record.slot, record.cpu});
        }
        before = &record;
    }
    for (const auto& [call, share] : shares) layout.owners.push_back(share);

    if (cycle.begin > layout.due) {
        const bool follows = number > 0 && cycles[number - 1].finished;
        Silence late{.begin = layout.due, .end = cycle.begin, .slotAfter = cycle.beginSlot};
        if (follows) {
            late.begin = std::max(late.begin, cycles[number - 1].end);
            late.slotBefore = cycles[number - 1].endSlot;
        }
        for (const SeenRecord& record : scene.records) {
            if (record.slot == cycle.beginSlot) late.cpuAfter = record.cpu;
        }
        layout.owners.push_back(
            {.owner = kLateBegin, .time = cycle.begin - layout.due, .silence = late});
    }
    std::ranges::stable_sort(layout.owners, [&](const OwnerShare& a, const OwnerShare& b) {
        return timed.excessOf(a.owner, a.time) > timed.excessOf(b.owner, b.time);
    });
    return layout;
}

}  // namespace sonaprobe
