// Gives acts to threads.

#include "sim/dropouts/driver_pool.h"

#include <algorithm>

namespace sonaprobe::sim {
namespace {

constexpr uint64_t kFirstThread = 0x84;
constexpr uint64_t kThreadStep = 9;
constexpr Ticks kRest = us(40);  // between two acts of a thread
constexpr Ticks kLongestInterrupt = us(500);

constexpr uint64_t threadId(size_t which) { return kFirstThread + kThreadStep * which; }

bool isFree(const std::map<Ticks, Ticks>& busy, Ticks begin, Ticks end) {
    const auto after = busy.lower_bound(end);
    return after == busy.begin() || std::prev(after)->second <= begin;
}

}  // namespace

DriverPool::DriverPool(Score& score, const Level& level)
    : score_(score), level_(level), busy_(level.driverThreads) {}

size_t DriverPool::findThread(Ticks begin, Ticks end) {
    const size_t first = score_.chance(0, busy_.size() - 1);
    for (size_t i = 0; i < busy_.size(); i++) {
        const size_t which = (first + i) % busy_.size();
        if (isFree(busy_[which], begin, end)) return which;
    }
    return kNone;
}

const DriverAct& DriverPool::pick(std::span<const DriverAct> acts) {
    return acts[score_.chance(0, acts.size() - 1)];
}

std::optional<Performance> DriverPool::play(const DriverAct& act, Ticks begin, Ticks hold,
                                            Ticks longest) {
    const size_t which = findThread(begin, begin + longest);
    if (which == kNone) return {};
    const auto cpu = static_cast<uint32_t>(
        score_.chance(Ticks{level_.ioThreads} * kCpusOfIoThread, kProcessors - 1));
    const Performance performance = score_.play(act.table, threadId(which), cpu, begin, hold);
    busy_[which][begin] = performance.end + kRest;
    return performance;
}

std::optional<Performance> DriverPool::interrupt(uint32_t cpu, Ticks begin, Ticks until) {
    const size_t which = findThread(begin, until + kLongestInterrupt);
    if (which == kNone) return {};
    Performance row{.first = score_.size(), .begin = begin, .end = begin};
    while (row.end < until) {
        const DriverAct& act = pick(interruptWork());
        row.end = score_.play(act.table, threadId(which), cpu, row.end, 0).end +
                  score_.chance(us(2), us(20));
    }
    row.past = score_.size();
    busy_[which][begin] = row.end + kRest;
    return row;
}

void DriverPool::fill(Ticks end) {
    for (size_t which = 0; which < busy_.size(); which++) {
        std::map<Ticks, Ticks>& busy = busy_[which];
        Ticks time = score_.chance(0, ms(20));
        while (time < end) {
            const bool isGate = score_.oneIn(level_.decoys);
            const Ticks hold =
                isGate ? score_.chance(us(200), score_.chance(us(400), level_.longestDecoy)) : 0;
            const Ticks longest = hold + us(900) + kRest;
            const auto cpu = static_cast<uint32_t>(score_.chance(0, kProcessors - 1));
            if (isFree(busy, time, time + longest) && score_.isFree(cpu, time, time + longest)) {
                const DriverAct& act = pick(isGate ? gateHolders() : shortWork());
                const Performance performance =
                    score_.play(act.table, threadId(which), cpu, time, hold);
                busy[time] = performance.end + kRest;
                time = performance.end;
            }
            time += score_.chance(us(200), ms(9));
        }
    }
}

}  // namespace sonaprobe::sim
