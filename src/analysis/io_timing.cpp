// Times the I/O cycles.

#include "analysis/io_timing.h"

#include <algorithm>
#include <cmath>
#include <span>
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
    io.cycles.forEach([&](IoCycle& cycle) {
        cycle.told.host -= timed.clockShift;
        cycle.due -= timed.clockShift;
    });
    io.toldByOrphans.forEach([&](auto& orphan) { orphan.told.host -= timed.clockShift; });
}

// How long a frame is where the cycles do not tell: of stamps, else of the rate; 0 where those do
// not tell either.
double usualPerFrame(const IoThread& io, const Stamps& stamps) {
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
    if (!fromStamps.empty()) return upperMedian(fromStamps);
    return io.rate == 0 ? 0 : 1e9 / static_cast<double>(io.rate);
}

// Cycles that are near each other.
struct Block {
    size_t begin;
    size_t end;
};

Block blockOf(const IoThread& io, size_t number) {
    return {number * kBlock, std::min((number + 1) * kBlock, io.cycles.size())};
}

// How long a frame is by what the ends of cycles tell, as often as they do.
std::vector<double> toldPerFrame(const IoThread& io, Block block) {
    std::vector<double> told;
    told.reserve(kBlock);
    for (size_t i = block.begin; i < block.end; ++i) {
        const auto from = io.toldBefore(i);
        const SampleTime& to = io.cycles[i].told;
        if (!from || !io.cycles[i].tells) continue;
        if (to.sample <= from->sample || to.host <= from->host) continue;
        told.push_back(static_cast<double>(to.host - from->host) /
                       static_cast<double>(to.sample - from->sample));
    }
    return told;
}

void setDueTimes(IoThread& io, Block block, double perFrame) {
    for (size_t i = block.begin; i < block.end; ++i) {
        IoCycle& cycle = io.cycles[i];
        cycle.budget = timeOfFrames(static_cast<double>(cycle.frames), perFrame);
        const auto told = io.toldBefore(i);
        if (!told || perFrame == 0) continue;
        const auto ahead = static_cast<int64_t>(cycle.sample - told->sample);
        cycle.hasDue = true;
        cycle.due = told->host + timeOfFrames(static_cast<double>(ahead), perFrame);
    }
}

// Due times block by block, while its cycles are at hand.
void setDueTimes(TimedThread& timed, const Stamps& stamps) {
    const double usual = usualPerFrame(*timed.io, stamps);
    std::vector<double>& perFrame = timed.perFrameByBlock;
    for (size_t number = 0; number * kBlock < timed.io->cycles.size(); ++number) {
        const Block block = blockOf(*timed.io, number);
        std::vector<double> told = toldPerFrame(*timed.io, block);
        const double last = perFrame.empty() ? 0 : perFrame.back();
        const bool few = told.size() < 3;
        perFrame.push_back(!few           ? upperMedian(told)
                           : last != 0    ? last
                           : usual != 0   ? usual
                           : told.empty() ? 0
                                          : told.front());
        setDueTimes(*timed.io, block, perFrame.back());
    }
    // What a short beginning could not tell, the next block does.
    for (size_t number = perFrame.size(); number-- > 1;) {
        if (perFrame[number - 1] != 0 || perFrame[number] == 0) continue;
        perFrame[number - 1] = perFrame[number];
        setDueTimes(*timed.io, blockOf(*timed.io, number - 1), perFrame[number]);
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
            const Nanoseconds distance = medianOf(std::move(apart));
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
    timed.stampScatter = bounded(medianOf(std::move(apart)));
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
        setDueTimes(timed, stamps == stampsOf.end() ? Stamps() : stamps->second);
        shiftClock(timed);
    }
    const std::map<uint32_t, size_t> places = placesOf(threads);
    for (Overload& overload : trace.overloads) {
        const auto place = places.find(overload.thread);
        if (place == places.end()) continue;
        TimedThread& timed = threads[place->second];
        timed.hasDropouts = true;
        if (overload.targetHost) *overload.targetHost -= timed.clockShift;
        findCycle(overload, timed.io->cycles);
        if (overload.cycle != kNoCycle) timed.io->cycles[overload.cycle].overloaded = true;
    }
    assignStamps(threads, places, stampsOf);
    for (TimedThread& timed : threads) {
        if (!timed.hasDropouts) continue;
        learnUsual(timed);
        measureStamps(timed);
    }
    return threads;
}

}  // namespace sonaprobe
