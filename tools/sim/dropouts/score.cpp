// Gathers what the threads trace.

#include "sim/dropouts/score.h"

#include <algorithm>
#include <numeric>

#include "sim/stories/driver_acts.h"

namespace sonaprobe::sim {

Score::Score(uint64_t seed) {
    stage_.clock.origin = kTraceOrigin;
    stage_.stories.push_back({.random = {seed}});
}

Ticket Score::put(Ticks time, uint64_t thread, uint32_t cpu, uint32_t debugid, uint64_t a1,
                  uint64_t a2, uint64_t a3, uint64_t a4) {
    records_.push_back({stampOf(stage_.clock, time), a1, a2, a3, a4, thread, debugid, cpu, 0});
    return records_.size() - 1;
}

Performance Score::play(Table table, uint64_t thread, uint32_t cpu, Ticks begin, Ticks hold) {
    Performance performance{.first = records_.size(), .begin = begin};
    Actor actor{.thread = {thread, cpu}, .cpu = cpu};
    story().variables[kHold] = hold;
    beginTable(actor, table, begin);
    TraceRecord record{};
    while (nextRecordOf(stage_, story(), actor, record)) {
        record.cpuid = cpu;
        records_.push_back(record);
    }
    performance.past = records_.size();
    performance.end = actor.time;
    return performance;
}

Ticket Score::find(const Performance& within, uint32_t debugid) const {
    for (Ticket ticket = within.first; ticket < within.past; ticket++) {
        if (records_[ticket].debugid == debugid) return ticket;
    }
    return kNoTicket;
}

bool Score::isFree(uint32_t cpu, Ticks begin, Ticks end) const {
    const auto stretches = reserved_.find(cpu);
    if (stretches == reserved_.end()) return true;
    const auto after = stretches->second.lower_bound(end);
    return after == stretches->second.begin() || std::prev(after)->second <= begin;
}

void Score::disorder(uint64_t rarity, Ticks most) {
    arrivals_.clear();
    if (rarity == 0) return;
    std::map<uint64_t, Ticks> latest;  // by thread, whose own order stays
    std::vector<Ticket> order(records_.size());
    std::iota(order.begin(), order.end(), Ticket{0});
    std::ranges::stable_sort(order, {}, [&](Ticket ticket) { return records_[ticket].timestamp; });
    arrivals_.resize(records_.size());
    for (const Ticket ticket : order) {
        const TraceRecord& record = records_[ticket];
        Ticks& arrival = latest[record.arg5];
        arrival = std::max(arrival, record.timestamp + (oneIn(rarity) ? chance(0, most) : 0));
        arrivals_[ticket] = arrival;
    }
}

std::vector<Ticket> Score::inOrder() const {
    std::vector<Ticket> order;
    for (Ticket ticket = 0; ticket < records_.size(); ticket++) {
        const Ticks time = records_[ticket].timestamp - stage_.clock.origin;
        const bool isLost = std::ranges::any_of(lost_, [&](const LostStretch& stretch) {
            return stretch.begin <= time && time < stretch.end;
        });
        if (!isLost) order.push_back(ticket);
    }
    const auto arrivalOf = [&](Ticket ticket) {
        const Ticks time = records_[ticket].timestamp;
        return std::pair(arrivals_.empty() ? time : arrivals_[ticket], time);
    };
    // Records of one thread at one time stay in the order in which they were traced.
    std::ranges::stable_sort(order, {}, arrivalOf);
    return order;
}

}  // namespace sonaprobe::sim
