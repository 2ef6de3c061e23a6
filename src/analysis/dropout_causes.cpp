// Asks for each cause in turn.

#include "analysis/dropout_causes.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "analysis/cycle_layout.h"
#include "analysis/engine_changes.h"
#include "analysis/holders.h"
#include "analysis/record_gaps.h"

namespace sonaprobe {

namespace {

// How far delays are followed from cycle to cycle before; a scene reaches a little further.
constexpr size_t kLongestCarry = 5;

// A stamp departs where it is off by more than this, than so many times what stamps scatter, and
// than such a part of the budget. It moves the target of the cycles right after it.
constexpr Nanoseconds kLeastDeparture = 40'000;
constexpr int kDepartureInScatters = 8;
constexpr int kDepartureInBudgets = 50;
constexpr size_t kCyclesOfStamp = 3;
constexpr std::ptrdiff_t kMostStamps = 256;  // in them
constexpr double kExplains = 0.7;  // of the time that a cycle had left, a departure has to be
constexpr double kTargetOff = 0.1;

// A gap is no pause where it is so many times longer than nearly all others.
constexpr int kLostInGaps = 3;
constexpr unsigned kNearlyAll = 99;
// Of a cycle whose samples jump, a gap has taken so much where ends without starts follow, and so
// much where nothing but its length tells. An invalid slot tells as ends without starts do.
constexpr double kLeastLost = 0.05;
constexpr double kMostlyLost = 0.25;

// What work on a processor has to fill of an excess, and to leave no doubt.
constexpr double kFilled = 0.8;
constexpr double kFilledWhole = 0.93;
constexpr size_t kLeastWork = 4;  // records

// An engine change that covers so much of a silence did it, whenever it ended.
constexpr double kAcross = 0.9;

// An excess that is such a part of all leaves no other place.
constexpr double kNearlyAllExcess = 0.7;

// Others that were at work for such a part of a silence leave a doubt.
constexpr double kContested = 0.2;

double ratio(Nanoseconds part, Nanoseconds whole) {
    return whole <= 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

// The records of a call.
std::vector<uint64_t> slotsOf(const SeenCall& call) {
    if (!call.finished) return {call.startSlot};
    return {call.startSlot, call.endSlot};
}

bool isOfCycle(uint32_t code) { return code == kClient || code == kIoCycle; }

// Judges one dropout.
class Judge {
  public:
    Judge(const IoTrace& trace, const TimedThread& timed, const Overload& overload,
          Nanoseconds ordinaryGap)
        : trace_(trace),
          timed_(timed),
          scene_(overload.scene),
          overload_(overload),
          ordinaryGap_(ordinaryGap) {}

    Verdict judge() const;

  private:
    Verdict judgeCycle(const CycleLayout& layout, size_t carried) const;
    Nanoseconds nextAfter(const SeenRecord& record) const;
    std::optional<Verdict> afterGap(Nanoseconds from, Nanoseconds until, bool hasCycle) const;
    std::optional<Verdict> lostRecords(const CycleLayout& layout) const;
    std::optional<Verdict> clock(const CycleLayout& layout) const;
    std::optional<Verdict> carriedOn(const CycleLayout& layout, size_t carried) const;
    std::optional<Verdict> preempted(const OwnerShare& place, bool shown) const;
    std::optional<Verdict> engineChange(const CycleLayout& layout,
                                        const std::vector<Holder>& holders) const;
    Verdict blockedBy(const OwnerShare& place, const std::vector<Holder>& holders) const;
    Verdict placeItself(const CycleLayout& layout) const;

    bool isLong(const Gap& gap) const { return gap.length() > kLostInGaps * ordinaryGap_; }
    Verdict lostAt(const Gap& gap, Certainty certainty) const;
    void addWitnesses(const CycleLayout& layout, Verdict& verdict) const;

    Nanoseconds excessOf(const OwnerShare& share) const {
        return timed_.excessOf(share.owner, share.time);
    }
    CycleLayout layOut(size_t number, Nanoseconds until) const {
        return layOutCycle(timed_, scene_, number, until);
    }
    Culprit culpritOf(const SeenCall& call) const {
        return {call.startSlot, call.code, trace_.threadIds[call.thread], call.cpu};
    }

    const IoTrace& trace_;
    const TimedThread& timed_;
    const Scene& scene_;
    const Overload& overload_;
    Nanoseconds ordinaryGap_;
};

Verdict Judge::lostAt(const Gap& gap, Certainty certainty) const {
    return {.cause = DropoutCause::lostRecords,
            .certainty = certainty,
            .culprit = Culprit{.slot = gap.slotAfter},
            .share = 1,
            .evidence = {gap.slotBefore, gap.slotAfter, overload_.slot}};
}

// When the thread was to trace after a record of the server's.
Nanoseconds Judge::nextAfter(const SeenRecord& record) const {
    if (record.debugid != (kIoCycle | 2)) return record.time + timed_.any.reach / 2;
    const StableList<IoCycle>& cycles = timed_.io->cycles;
    const size_t after = cycles.countUpTo(record.slot, &IoCycle::beginSlot);
    const IoCycle* const cycle = after == 0 ? nullptr : &cycles[after - 1];
    const bool isKnown = cycle != nullptr && cycle->endSlot == record.slot && cycle->tells;
    if (!isKnown) return record.time + timed_.any.reach / 2;
    return std::max(record.time, cycle->told.host + timed_.usualOf(kLateBegin).median);
}

// What an end without a start proves: of a client or cycle from `from` to `until`, or the dropout
// itself where it has no cycle.
std::optional<Verdict> Judge::afterGap(Nanoseconds from, Nanoseconds until, bool hasCycle) const {
    const SeenRecord* witness = nullptr;
    const SeenRecord* before = nullptr;  // the last record before the gap
    const SeenRecord* last = nullptr;    // of the thread, by the server
    const SeenRecord* lastOfCycle = nullptr;
    for (const SeenRecord& record : scene_.records) {
        const uint32_t code = codeOf(record.debugid);
        // A driver's calls may stand inside a client that began in the gap.
        if (record.thread != overload_.thread || !isServer(code)) continue;
        if (record.time > until || record.slot > overload_.slot) break;
        const bool isOrphan = record.orphan && isOfCycle(code) && record.time >= from;
        const bool isAlone = !hasCycle && record.slot == overload_.slot;
        if (witness == nullptr && (isOrphan || isAlone)) {
            witness = &record;
            // In a cycle that began in the gap, whole clients may have come after it.
            before = code == kClient ? last : lastOfCycle;
        }
        const bool endsWhole = !record.orphan && record.debugid == (kIoCycle | 2);
        if (!hasCycle && endsWhole) witness = nullptr;
        if (code == kIoCycle) lastOfCycle = &record;
        last = &record;
    }
    if (witness == nullptr) return {};
    const Nanoseconds begin = before == nullptr ? scene_.records.front().time : before->time;
    auto gap = largestGap(scene_, begin, witness->time);
    if (!gap) return Verdict{.cause = DropoutCause::lostRecords, .share = 1};
    // What is missing was due in the gap, as a rule; a longer pause elsewhere is none of it.
    if (before != nullptr) {
        const Nanoseconds next = nextAfter(*before);
        const auto there = largestGap(scene_, next, next + 1);
        const bool fits = there && there->begin >= begin && there->end <= witness->time;
        if (fits && there->length() > timed_.any.reach && there->explains == gap->explains) {
            const bool standsOut = gap->standsOut && gap->slotAfter == there->slotAfter;
            gap = there;
            gap->standsOut = standsOut;
        }
    }
    const bool shown = witness->orphan && before != nullptr && gap->standsOut && isLong(*gap);
    Verdict lost = lostAt(*gap, shown ? Certainty::shown : Certainty::likely);
    lost.evidence.push_back(witness->slot);
    return lost;
}

std::optional<Verdict> Judge::lostRecords(const CycleLayout& layout) const {
    const IoCycle& cycle = *layout.cycle;
    const Nanoseconds from = std::min(layout.due, cycle.begin);
    if (auto lost = afterGap(from, layout.until, true)) return lost;
    const auto marked = markedGap(scene_, from, layout.until);
    if (marked && ratio(marked->length(), layout.until - from) > kLeastLost) {
        return lostAt(*marked, Certainty::likely);
    }
    // The gap may have merged two cycles, or lie before one that begins in the air.
    const bool endsElsewhere =
        cycle.tells && cycle.finished && cycle.told.sample != cycle.sample + cycle.frames;
    const auto toldBefore = timed_.io->toldBefore(layout.number);
    const bool beginsElsewhere = toldBefore && toldBefore->sample != cycle.sample;
    if (!endsElsewhere && !beginsElsewhere && !cycle.broken) return {};
    const auto gap = largestGap(scene_, from, layout.until);
    if (!gap) return {};
    const double part = ratio(gap->length(), layout.until - from);
    if ((gap->explains > 0 && part > kLeastLost) || (isLong(*gap) && part > kMostlyLost)) {
        return lostAt(*gap, Certainty::likely);
    }
    if (!endsElsewhere || !layout.dueKnown) return {};
    // The server leaves out cycles that it cannot reach any more. Two merged cycles have the second
    // one's target.
    const Nanoseconds skipped =
        timeOfFrames(static_cast<double>(cycle.told.sample - cycle.sample - cycle.frames),
                     timed_.perFrame(layout.number));
    const bool otherTarget =
        overload_.targetHost && overload_.cycle == layout.number &&
        std::abs(*overload_.targetHost - layout.deadline - skipped) < cycle.budget / 10;
    if (!otherTarget) return {};
    return lostAt(*gap, Certainty::likely);
}

// Whether a stamp has moved the target of a cycle that was in time.
std::optional<Verdict> Judge::clock(const CycleLayout& layout) const {
    const IoCycle& cycle = *layout.cycle;
    const size_t first = layout.number - std::min(layout.number, kCyclesOfStamp);
    const uint64_t from = timed_.io->cycles[first].beginSlot;
    const Nanoseconds least = std::max({kLeastDeparture, kDepartureInScatters * timed_.stampScatter,
                                        cycle.budget / kDepartureInBudgets});
    const Stamp* departed = nullptr;
    Nanoseconds departure = 0;
    Nanoseconds deadline = layout.deadline;
    const auto slotOf = [](const Stamp* stamp) { return stamp->slot; };
    auto at = std::ranges::lower_bound(timed_.stamps, from, {}, slotOf);
    const auto end = std::ranges::lower_bound(timed_.stamps, overload_.slot, {}, slotOf);
    if (end - at > kMostStamps) at = end - kMostStamps;
    for (; at < end; ++at) {
        const Stamp* const stamp = *at;
        const Stamp* const before = at == timed_.stamps.begin() ? nullptr : *std::prev(at);
        const Nanoseconds host = stamp->at.host - timed_.clockShift;
        const auto line = timed_.timeOf(stamp->at.sample, stamp->time);
        Nanoseconds off = 0;
        if (line) {
            off = host - *line - timed_.stampShift;
        } else if (before != nullptr) {
            const auto frames = static_cast<int64_t>(stamp->at.sample - before->at.sample);
            off = stamp->at.host - before->at.host -
                  timeOfFrames(static_cast<double>(frames), timed_.perFrame(layout.number));
        }
        if (std::abs(off) <= std::max(least, std::abs(departure))) continue;
        departed = stamp;
        departure = off;
        // What the cycle's deadline was before the stamp moved the line.
        const auto due = timed_.timeOf(cycle.sample, stamp->time);
        deadline = due ? *due + cycle.budget : layout.deadline;
    }
    if (departed == nullptr) return {};
    const Nanoseconds left = std::max(deadline, layout.deadline) - layout.until;
    if (left < 0 || ratio(std::abs(departure), left) < kExplains) return {};
    Verdict verdict{.cause = DropoutCause::clock, .certainty = Certainty::likely, .share = 1};
    verdict.culprit =
        Culprit{departed->slot, kZeroTimeStamp, trace_.threadIds[departed->thread], departed->cpu};
    verdict.evidence = {departed->slot};
    if (overload_.targetHost && overload_.cycle == layout.number) {
        const Nanoseconds moved = *overload_.targetHost - deadline;
        const bool agree = ratio(std::abs(moved - departure), std::abs(departure)) < kTargetOff;
        if (agree) verdict.certainty = Certainty::shown;
    }
    return verdict;
}

std::optional<Verdict> Judge::carriedOn(const CycleLayout& layout, size_t carried) const {
    if (carried >= kLongestCarry || layout.number == 0 || !layout.dueKnown) return {};
    if (layout.owners.empty() || layout.owners.front().owner != kLateBegin) return {};
    const IoCycle& before = timed_.io->cycles[layout.number - 1];
    const Usual& wake = timed_.usualOf(kLateBegin);
    if (!before.finished || before.end <= layout.due + wake.median) return {};
    if (layout.cycle->begin - before.end > wake.most()) return {};
    Verdict verdict = judgeCycle(layOut(layout.number - 1, before.end), carried + 1);
    verdict.carried = true;
    return verdict;
}

std::optional<Verdict> Judge::preempted(const OwnerShare& place, bool shown) const {
    const BusyProcessor busy = workOn(scene_, place.silence, timed_.io->thread);
    const Nanoseconds excess = excessOf(place);
    const Nanoseconds filled = shown ? busy.shown : busy.called;
    if (ratio(filled, excess) < kFilled || busy.records < (shown ? kLeastWork : 2)) return {};
    Verdict verdict{.cause = DropoutCause::preempted, .certainty = Certainty::possible};
    if (shown) {
        verdict.certainty = ratio(filled, place.silence.length()) >= kFilledWhole
                                ? Certainty::shown
                                : Certainty::likely;
    }
    verdict.culprit = busy.firstCall ? culpritOf(*busy.firstCall)
                                     : Culprit{busy.firstSlot, busy.firstCode,
                                               trace_.threadIds[busy.thread], busy.cpu};
    verdict.evidence = {verdict.culprit->slot};
    verdict.share = ratio(std::min(filled, excess), excess);
    return verdict;
}

std::optional<Verdict> Judge::engineChange(const CycleLayout& layout,
                                           const std::vector<Holder>& holders) const {
    const OwnerShare& place = layout.owners.front();
    const auto verdictOf = [&](const SeenCall& call, Certainty certainty) {
        Verdict verdict{.cause = DropoutCause::engineChange, .certainty = certainty};
        verdict.culprit = culpritOf(call);
        verdict.evidence = slotsOf(call);
        return verdict;
    };
    if (place.call != nullptr && engineChangeOf(place.call->code) != EngineChange::none) {
        return verdictOf(*place.call, Certainty::likely);
    }
    for (const Holder& holder : holders) {
        if (holder.engineChange) return verdictOf(*holder.engineChange, Certainty::likely);
    }
    if (!holders.empty()) return {};
    const Silence& silence = place.silence;
    for (const SeenCall& change : engineChangesIn(scene_, layout.due - layout.cycle->budget,
                                                  silence.end, timed_.io->thread)) {
        const Nanoseconds covered =
            std::min(change.end, silence.end) - std::max(change.start, silence.begin);
        if (ratio(covered, silence.length()) >= kAcross) {
            return verdictOf(change, Certainty::possible);
        }
        // A change that another call takes back, or completes, as the thread goes on.
        const Usual& usual = timed_.usualOf(place.owner);
        if (change.start - silence.begin > usual.most()) continue;
        for (const SeenCall& call : scene_.calls) {
            const Nanoseconds after = silence.end - call.end;
            if (call.thread != change.thread || call.startSlot <= change.endSlot) continue;
            if (call.finished && after >= 0 && after <= usual.most()) {
                return verdictOf(change, Certainty::possible);
            }
        }
    }
    return {};
}

Verdict Judge::blockedBy(const OwnerShare& place, const std::vector<Holder>& holders) const {
    const Holder& holder = holders.front();
    const bool sure = holders.size() == 1 && !holder.byStep;
    Verdict verdict{.cause = DropoutCause::blockedBy,
                    .certainty = sure ? Certainty::likely : Certainty::possible};
    verdict.culprit = culpritOf(holder.culprit);
    verdict.evidence = holder.evidence;
    for (const SeenCall& call : {holder.outer, holder.culprit}) {
        const std::vector<uint64_t> slots = slotsOf(call);
        verdict.evidence.insert(verdict.evidence.end(), slots.begin(), slots.end());
    }
    verdict.share = ratio(holder.covered, place.silence.length());
    return verdict;
}

Verdict Judge::placeItself(const CycleLayout& layout) const {
    const OwnerShare& place = layout.owners.front();
    Verdict verdict{.certainty = Certainty::likely, .share = 1};
    if (place.owner == kLateBegin) {
        verdict.cause = DropoutCause::lateWake;
        return verdict;
    }
    if (place.call == nullptr) {
        verdict.certainty = Certainty::possible;
        return verdict;
    }
    verdict.cause = place.call->code == kClient ? DropoutCause::client : DropoutCause::driverCall;
    verdict.culprit = culpritOf(*place.call);
    verdict.evidence = slotsOf(*place.call);

    // Nobody else can have taken the time where nobody else did anything as long.
    double all = 0;
    for (const OwnerShare& share : layout.owners) {
        all += static_cast<double>(std::max<Nanoseconds>(0, excessOf(share)));
    }
    const bool contested = std::ranges::any_of(scene_.calls, [&](const SeenCall& call) {
        const Nanoseconds covered =
            std::min(call.end, place.silence.end) - std::max(call.start, place.silence.begin);
        return call.thread != timed_.io->thread &&
               ratio(covered, place.silence.length()) > kContested;
    });
    const BusyProcessor busy = workOn(scene_, place.silence, timed_.io->thread);
    if (!contested && ratio(busy.called, place.silence.length()) < kContested &&
        static_cast<double>(excessOf(place)) > kNearlyAllExcess * all) {
        verdict.certainty = Certainty::shown;
    }
    return verdict;
}

// The records around the place of the fault, which prove how long it took.
void Judge::addWitnesses(const CycleLayout& layout, Verdict& verdict) const {
    if (layout.cycle != nullptr) verdict.evidence.push_back(layout.cycle->beginSlot);
    if (!layout.owners.empty()) {
        const Silence& silence = layout.owners.front().silence;
        if (silence.slotBefore != 0) verdict.evidence.push_back(silence.slotBefore);
        if (silence.slotAfter != 0) verdict.evidence.push_back(silence.slotAfter);
    }
}

Verdict Judge::judgeCycle(const CycleLayout& layout, size_t carried) const {
    if (const auto lost = lostRecords(layout)) return *lost;
    Verdict verdict{};
    const bool isDropout = carried == 0;
    const auto ask = [&]() -> Verdict {
        if (isDropout) {
            if (const auto moved = clock(layout)) return *moved;
            const bool inTime = layout.dueKnown && layout.until <= layout.deadline;
            if (inTime) return {};
        }
        if (const auto before = carriedOn(layout, carried)) return *before;
        if (layout.owners.empty() || excessOf(layout.owners.front()) <= 0) return {};
        const OwnerShare& place = layout.owners.front();
        if (const auto busy = preempted(place, true)) return *busy;
        const std::vector<Holder> holders =
            findHolders(scene_, place.silence, timed_.usualOf(place.owner), timed_.io->thread);
        if (const auto change = engineChange(layout, holders)) return *change;
        if (!holders.empty()) return blockedBy(place, holders);
        if (const auto busy = preempted(place, false)) return *busy;
        return placeItself(layout);
    };
    verdict = ask();
    addWitnesses(layout, verdict);
    return verdict;
}

Verdict Judge::judge() const {
    Verdict verdict{};
    if (scene_.records.empty()) {
        // Too many dropouts: its records were not kept.
    } else if (overload_.cycle == kNoCycle) {
        // Something of its cycle is lost; from where on is told by the first end without a start.
        const auto lost = afterGap(scene_.records.front().time, overload_.time, false);
        verdict = lost.value_or(Verdict{.cause = DropoutCause::lostRecords, .share = 1});
    } else {
        verdict = judgeCycle(layOut(overload_.cycle, overload_.time), 0);
    }
    verdict.evidence.push_back(overload_.slot);
    std::ranges::sort(verdict.evidence);
    verdict.evidence.erase(std::unique(verdict.evidence.begin(), verdict.evidence.end()),
                           verdict.evidence.end());
    return verdict;
}

std::vector<Dropout> judgeDropouts(IoTrace& trace, const std::vector<TimedThread>& threads) {
    const Nanoseconds ordinaryGap = trace.gaps.count() == 0 ? 0 : trace.gaps.percentile(kNearlyAll);
    // For dropouts on threads without cycles.
    IoThread nobody{};
    TimedThread none{};
    none.io = &nobody;
    const std::map<uint32_t, size_t> places = placesOf(threads);
    std::vector<Dropout> dropouts;
    for (const Overload& overload : trace.overloads) {
        const auto found = places.find(overload.thread);
        const TimedThread& timed = found == places.end() ? none : threads[found->second];
        const Judge judge(trace, timed, overload, ordinaryGap);
        Dropout& dropout = dropouts.emplace_back();
        dropout.slot = overload.slot;
        dropout.time = overload.time;
        dropout.thread = trace.threadIds[overload.thread];
        dropout.lacking = overload.overrun;
        if (overload.cycle != kNoCycle) {
            const IoCycle& cycle = timed.io->cycles[overload.cycle];
            if (cycle.budget > 0) dropout.budget = cycle.budget;
            const CycleLayout layout =
                layOutCycle(timed, overload.scene, overload.cycle, overload.time);
            if (!dropout.lacking && layout.dueKnown && layout.until > layout.deadline) {
                dropout.lacking = layout.until - layout.deadline;
            }
        }
        dropout.verdict = judge.judge();
    }
    return dropouts;
}

}  // namespace

IoAnswer judgeIo(IoTrace io) {
    IoAnswer answer;
    answer.io = std::move(io);
    answer.threads = timeThreads(answer.io);
    answer.dropouts = judgeDropouts(answer.io, answer.threads);
    return answer;
}

}  // namespace sonaprobe
