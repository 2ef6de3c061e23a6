// Times the I/O cycles.

#include "analysis/io_timing.h"

#include <algorithm>
#include <cmath>
#include <utility>

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

// Which value would stand at a place if they were sorted. Puts them in another order: those before
// and after the place are on its side then.
template <class T>
T valueAt(size_t place, std::span<T> values) {
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(place));
    return values[place];
}

template <class T>
T upperMedian(std::vector<T>& values) {
    return valueAt(values.size() / 2, std::span(values));
}

// The host clock is shifted where it stands apart by more than two budgets.
void shiftClock(TimedThread& timed) {
    IoThread& io = *timed.io;
    const size_t some = io.cycles.size() / 2;
    const double most = 2 * static_cast<double>(io.cycles[some].frames) * timed.perFrame(some);
    // As a rule it is not, and counting tells that sooner than the median.
    size_t before = 0;
    size_t after = 0;
    io.clockShifts.forEach([&](Nanoseconds shift) {
        if (std::abs(static_cast<double>(shift)) <= most) return;
        ++(shift < 0 ? before : after);
    });
    const size_t middle = io.clockShifts.size() / 2;
    if (before <= middle && middle + after < io.clockShifts.size()) return;
    if (io.clockShifts.empty()) return;
    std::vector<Nanoseconds> shifts;
    io.clockShifts.forEach([&](Nanoseconds shift) { shifts.push_back(shift); });
    timed.clockShift = medianOf(std::move(shifts));
    io.cycles.forEach([&](IoCycle& cycle) { cycle.told.host -= timed.clockShift; });
    io.toldByOrphans.forEach([&](auto& orphan) { orphan.told.host -= timed.clockShift; });
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
    if (!fromStamps.empty()) other = upperMedian(fromStamps);

    const StableList<IoCycle>& cycles = timed.io->cycles;
    std::vector<double> ratios;
    for (size_t first = 0; first < cycles.size(); first += kBlock) {
        ratios.clear();
        for (size_t i = first; i < std::min(first + kBlock, cycles.size()); ++i) {
            const auto from = timed.io->toldBefore(i);
            const SampleTime& to = cycles[i].told;
            if (!from || !cycles[i].tells) continue;
            if (to.sample <= from->sample || to.host <= from->host) continue;
            ratios.push_back(static_cast<double>(to.host - from->host) /
                             static_cast<double>(to.sample - from->sample));
        }
        const double last = timed.perFrameByBlock.empty() ? 0 : timed.perFrameByBlock.back();
        const bool few = ratios.size() < 3;
        timed.perFrameByBlock.push_back(!few             ? upperMedian(ratios)
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
    for (size_t i = 0; i < timed.io->cycles.size(); ++i) {
        IoCycle& cycle = timed.io->cycles[i];
        const double perFrame = timed.perFrame(i);
        cycle.budget = timeOfFrames(static_cast<double>(cycle.frames), perFrame);
        const auto told = timed.io->toldBefore(i);
        if (!told || perFrame == 0) continue;
        const auto ahead = static_cast<int64_t>(cycle.sample - told->sample);
        cycle.hasDue = true;
        cycle.due = told->host + timeOfFrames(static_cast<double>(ahead), perFrame);
    }
}

void learnUsual(TimedThread& timed) {
    std::vector<bool> healthy;
    std::vector<Nanoseconds> times;
    healthy.reserve(timed.io->cycles.size());
    times.reserve(timed.io->cycles.size());
    const auto learn = [&](OwnerKey owner) {
        if (times.empty()) return;
        const size_t middle = times.size() / 2;
        const Nanoseconds median = upperMedian(times);
        const Nanoseconds quarter =
            valueAt(times.size() * 3 / 4 - middle, std::span(times).subspan(middle)) - median;
        timed.usual[owner] = {median, std::max(kLeastReach, kReachInQuarters * quarter)};
        times.clear();
    };
    timed.io->cycles.forEach([&](const IoCycle& cycle) {
        healthy.push_back(cycle.isHealthy());
        if (healthy.back()) times.push_back(std::max<Nanoseconds>(0, cycle.begin - cycle.due));
    });
    learn(kLateBegin);
    for (const OwnerTimes& owner : timed.io->owners) {
        size_t place = 0;
        owner.times.forEach([&](Nanoseconds time) {
            if (healthy[owner.cycles[place++]]) times.push_back(time);
        });
        learn(owner.owner);
    }
    timed.any.reach = kLeastReach;
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
void findCycle(Overload& overload, const StableList<IoCycle>& cycles) {
    if (overload.cycle != kNoCycle) return;
    const size_t after = cycles.countUpTo(overload.slot, &IoCycle::beginSlot);
    if (after == 0) return;
    const IoCycle& last = cycles[after - 1];
    if (last.finished && last.endSlot <= overload.slot &&
        overload.time - last.end < last.budget / 4) {
        overload.cycle = after - 1;
    }
}

}  // namespace

Nanoseconds timeOfFrames(double frames, double perFrame) {
    constexpr auto kMost = static_cast<double>(kFarthest);
    return static_cast<Nanoseconds>(std::clamp(frames * perFrame, -kMost, kMost));
}

Nanoseconds medianOf(std::vector<Nanoseconds> values) { return upperMedian(values); }

const Usual& TimedThread::usualOf(OwnerKey owner) const {
    const auto found = usual.find(owner);
    return found == usual.end() ? any : found->second;
}

double TimedThread::perFrame(size_t cycle) const {
    return perFrameByBlock.empty() ? 0 : perFrameByBlock[cycle / kBlock];
}

std::optional<Nanoseconds> TimedThread::timeOf(uint64_t sample, Nanoseconds before) const {
    size_t place = io->cycles.countUpTo(before, &IoCycle::end);
    for (int silent = 0; place > 0 && silent < kMostSilentCycles; ++silent) {
        const IoCycle& cycle = io->cycles[--place];
        if (static_cast<double>(before - cycle.end) / kCyclesOfLine >
            static_cast<double>(cycle.budget)) {
            return {};
        }
        if (!cycle.tells) continue;
        const auto ahead = static_cast<int64_t>(sample - cycle.told.sample);
        return cycle.told.host + timeOfFrames(static_cast<double>(ahead), perFrame(place));
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
