// Times the I/O cycles.

#include "analysis/io_timing.h"

#include <algorithm>
#include <cmath>
#include <tsl/robin_map.h>

namespace sonaprobe {

namespace {

constexpr size_t kBlock = 64;  // cycles that are near each other

// So many cycles that tell nothing are passed over, in search of one that does.
constexpr int kMostSilentCycles = 64;

// So many threads are asked whose line the stamps of another thread follow.
constexpr size_t kMostAsked = 64;

using Stamps = std::vector<const Stamp*>;

// Where no cycle has ended for so many budgets, the thread has been stopped meanwhile.
constexpr double kCyclesOfLine = 16;

// A thread's wake-up and its way through a lock take up to this where nothing is wrong.
constexpr Nanoseconds kLeastReach = 60'000;

// The upper quarter of the healthy times, taken so often, reaches to where they thin out, whatever
// a few slow ones do.
constexpr int kReachInQuarters = 3;

// Puts the values in another order.
template <class T>
T quantile(std::vector<T>& values, size_t share, size_t of) {
    const size_t rank = values.size() * share / of;
    const auto place =
        values.begin() + static_cast<std::ptrdiff_t>(std::min(rank, values.size() - 1));
    std::ranges::nth_element(values, place);
    return *place;
}

// The host clock is shifted where it stands apart by more than two budgets.
void shiftClock(TimedThread& timed) {
    std::vector<Nanoseconds> shifts;
    for (const IoCycle& cycle : timed.io->cycles) {
        if (cycle.clockShift != 0) shifts.push_back(cycle.clockShift);
    }
    if (shifts.empty()) return;
    const Nanoseconds shift = medianOf(shifts);
    const IoCycle& some = timed.io->cycles[timed.io->cycles.size() / 2];
    const double budget =
        static_cast<double>(some.frames) * timed.perFrame(timed.io->cycles.size() / 2);
    if (std::abs(static_cast<double>(shift)) <= 2 * budget) return;
    timed.clockShift = shift;
    for (IoCycle& cycle : timed.io->cycles) {
        if (cycle.toldBefore) cycle.toldBefore->host -= shift;
        if (cycle.told) cycle.told->host -= shift;
    }
}

// Of the times that ends of cycles tell, else of stamps, else of the rate.
void measureFrames(TimedThread& timed, const Stamps& stamps) {
    std::vector<double> fromStamps;
    const Stamp* before = nullptr;
    for (const Stamp* const each : stamps) {
        const Stamp& stamp = *each;
        if (before != nullptr && stamp.at.sample > before->at.sample) {
            fromStamps.push_back(static_cast<double>(stamp.at.host - before->at.host) /
                                 static_cast<double>(stamp.at.sample - before->at.sample));
        } else if (stamp.perFrame > 0) {
            fromStamps.push_back(stamp.perFrame);
        }
        before = each;
    }
    double other = timed.io->rate == 0 ? 0 : 1e9 / static_cast<double>(timed.io->rate);
    if (!fromStamps.empty()) other = quantile(fromStamps, 1, 2);

    const std::deque<IoCycle>& cycles = timed.io->cycles;
    for (size_t first = 0; first < cycles.size(); first += kBlock) {
        std::vector<double> ratios;
        for (size_t i = first; i < std::min(first + kBlock, cycles.size()); ++i) {
            const auto& [from, to] = std::pair{cycles[i].toldBefore, cycles[i].told};
            if (!from || !to || to->sample <= from->sample || to->host <= from->host) continue;
            ratios.push_back(static_cast<double>(to->host - from->host) /
                             static_cast<double>(to->sample - from->sample));
        }
        const double last = timed.perFrameByBlock.empty() ? 0 : timed.perFrameByBlock.back();
        const bool few = ratios.size() < 3;
        timed.perFrameByBlock.push_back(!few             ? quantile(ratios, 1, 2)
                                        : last != 0      ? last
                                        : other != 0     ? other
                                        : ratios.empty() ? 0
                                                         : ratios.front());
    }
    // What a short beginning could not tell, the next block does.
    for (size_t i = timed.perFrameByBlock.size(); i-- > 1;) {
        if (timed.perFrameByBlock[i - 1] == 0)
            timed.perFrameByBlock[i - 1] = timed.perFrameByBlock[i];
    }
}

void setDueTimes(TimedThread& timed) {
    std::deque<IoCycle>& cycles = timed.io->cycles;
    for (size_t i = 0; i < cycles.size(); ++i) {
        IoCycle& cycle = cycles[i];
        const double perFrame = timed.perFrame(i);
        cycle.budget = timeOfFrames(static_cast<double>(cycle.frames), perFrame);
        if (!cycle.toldBefore || perFrame == 0) continue;
        const auto ahead = static_cast<int64_t>(cycle.sample - cycle.toldBefore->sample);
        cycle.due = cycle.toldBefore->host + timeOfFrames(static_cast<double>(ahead), perFrame);
    }
}

void learnUsual(TimedThread& timed) {
    struct Hash {
        size_t operator()(OwnerKey owner) const { return keyedHash(owner, 5); }
    };
    tsl::robin_map<OwnerKey, std::vector<Nanoseconds>, Hash> times;
    for (size_t i = 0; i < timed.io->cycles.size(); ++i) {
        const IoCycle& cycle = timed.io->cycles[i];
        if (!cycle.isHealthy()) continue;
        times[kLateBegin].push_back(std::max<Nanoseconds>(0, cycle.begin - *cycle.due));
        for (const auto& [owner, time] : timed.io->ownersOf(i)) times[owner].push_back(time);
    }
    timed.any.reach = kLeastReach;
    for (auto at = times.begin(); at != times.end(); ++at) {
        const OwnerKey owner = at->first;
        std::vector<Nanoseconds>& values = at.value();
        const Nanoseconds median = quantile(values, 1, 2);
        const Nanoseconds quarter = quantile(values, 3, 4) - median;
        timed.usual[owner] = {median, std::max(kLeastReach, kReachInQuarters * quarter)};
    }
}

// Whose device a stamp is of: its thread's, where that does I/O, else that of the thread on whose
// line it lies.
void assignStamps(std::vector<TimedThread>& threads, const std::map<uint32_t, size_t>& places,
                  const std::map<uint32_t, Stamps>& stampsOf) {
    for (const auto& [thread, stamps] : stampsOf) {
        const auto own = places.find(thread);
        if (own != places.end()) threads[own->second].stamps = stamps;
    }
    for (const auto& [thread, stamps] : stampsOf) {
        if (places.contains(thread)) continue;
        size_t asked = 0;
        TimedThread* best = nullptr;
        Nanoseconds least = 0;
        for (TimedThread& timed : threads) {
            if (!timed.stamps.empty()) continue;
            if (++asked > kMostAsked) break;
            std::vector<Nanoseconds> apart;
            for (const Stamp* stamp : stamps) {
                const auto line = timed.timeOf(stamp->at.sample, stamp->time);
                if (line) apart.push_back(stamp->at.host - timed.clockShift - *line);
            }
            if (apart.empty()) continue;
            // Lines of one rate run side by side, so the distance counts and not the scatter.
            for (Nanoseconds& value : apart) value = std::abs(value);
            const Nanoseconds distance = medianOf(apart);
            if (best != nullptr && distance >= least) continue;
            best = &timed;
            least = distance;
        }
        if (best != nullptr) best->stamps = stamps;
    }
}

void measureStamps(TimedThread& timed) {
    std::vector<Nanoseconds> apart;
    for (const Stamp* stamp : timed.stamps) {
        const auto line = timed.timeOf(stamp->at.sample, stamp->time);
        if (line) apart.push_back(stamp->at.host - timed.clockShift - *line);
    }
    if (apart.empty()) return;
    timed.stampShift = medianOf(apart);
    for (Nanoseconds& value : apart) value = std::abs(value - timed.stampShift);
    timed.stampScatter = bounded(medianOf(apart));
}

// A dropout that is told after its cycle's end belongs to it for a quarter of its budget.
void findCycle(Overload& overload, const std::deque<IoCycle>& cycles) {
    if (overload.cycle != kNoCycle) return;
    const auto after = std::ranges::upper_bound(cycles, overload.slot, {}, &IoCycle::beginSlot);
    if (after == cycles.begin()) return;
    const IoCycle& last = *std::prev(after);
    if (last.finished && last.endSlot <= overload.slot &&
        overload.time - last.end < last.budget / 4) {
        overload.cycle = static_cast<size_t>(std::prev(after) - cycles.begin());
    }
}

}  // namespace

Nanoseconds timeOfFrames(double frames, double perFrame) {
    constexpr auto kMost = static_cast<double>(kFarthest);
    return static_cast<Nanoseconds>(std::clamp(frames * perFrame, -kMost, kMost));
}

Nanoseconds medianOf(std::vector<Nanoseconds> values) { return quantile(values, 1, 2); }

const Usual& TimedThread::usualOf(OwnerKey owner) const {
    const auto found = usual.find(owner);
    return found == usual.end() ? any : found->second;
}

double TimedThread::perFrame(size_t cycle) const {
    return perFrameByBlock.empty() ? 0 : perFrameByBlock[cycle / kBlock];
}

std::optional<Nanoseconds> TimedThread::timeOf(uint64_t sample, Nanoseconds before) const {
    const auto after = std::ranges::upper_bound(io->cycles, before, {}, &IoCycle::end);
    int silent = 0;
    for (auto cycle = after; cycle != io->cycles.begin() && silent < kMostSilentCycles; ++silent) {
        --cycle;
        if (static_cast<double>(before - cycle->end) / kCyclesOfLine >
            static_cast<double>(cycle->budget)) {
            return {};
        }
        if (!cycle->told) continue;
        const auto ahead = static_cast<int64_t>(sample - cycle->told->sample);
        const auto place = static_cast<size_t>(cycle - io->cycles.begin());
        return cycle->told->host + timeOfFrames(static_cast<double>(ahead), perFrame(place));
    }
    return {};
}

std::map<uint32_t, size_t> placesOf(const std::vector<TimedThread>& threads) {
    std::map<uint32_t, size_t> places;
    for (size_t i = 0; i < threads.size(); ++i) places.emplace(threads[i].io->thread, i);
    return places;
}

std::vector<TimedThread> timeThreads(IoTrace& trace) {
    std::map<uint32_t, Stamps> stampsOf;  // threads
    for (const Stamp& stamp : trace.stamps) stampsOf[stamp.thread].push_back(&stamp);
    std::vector<TimedThread> threads;
    for (IoThread& io : trace.threads) {
        TimedThread& timed = threads.emplace_back();
        timed.io = &io;
        const auto stamps = stampsOf.find(io.thread);
        measureFrames(timed, stamps == stampsOf.end() ? Stamps() : stamps->second);
        shiftClock(timed);
        setDueTimes(timed);
    }
    const std::map<uint32_t, size_t> places = placesOf(threads);
    for (Overload& overload : trace.overloads) {
        const auto place = places.find(overload.thread);
        if (place == places.end()) continue;
        TimedThread& timed = threads[place->second];
        if (overload.targetHost) *overload.targetHost -= timed.clockShift;
        findCycle(overload, timed.io->cycles);
        if (overload.cycle != kNoCycle) timed.io->cycles[overload.cycle].overloaded = true;
    }
    for (TimedThread& timed : threads) learnUsual(timed);
    assignStamps(threads, places, stampsOf);
    for (TimedThread& timed : threads) measureStamps(timed);
    return threads;
}

}  // namespace sonaprobe
