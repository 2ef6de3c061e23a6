// Searches a scene for who kept an I/O thread waiting.

#include "analysis/holders.h"

#include <algorithm>
#include <map>
#include <set>

#include "analysis/engine_changes.h"

namespace sonaprobe {

namespace {

// A holder's end may be traced a little after it gave back what it held.
constexpr Nanoseconds kTracedAfter = 30'000;

// Of what a silence is longer than usual, its holder has to cover so much; of the silence, each of
// two holders one after the other.
constexpr double kLeastCover = 0.6;
constexpr double kLeastPart = 0.2;

// A holder that waits itself goes on so soon after whoever it waited for.
constexpr Nanoseconds kChainReach = 100'000;
constexpr int kLongestChain = 4;

// Records so close to each other show that a processor is busy between them.
constexpr Nanoseconds kClose = 60'000;
constexpr int kCloseParts = 5;  // or by such a part of the stretch, inside a call

using Calls = std::vector<SeenCall>;

Nanoseconds overlap(const SeenCall& call, Nanoseconds begin, Nanoseconds end) {
    return std::max<Nanoseconds>(0, std::min(call.end, end) - std::max(call.start, begin));
}

bool isInside(const SeenCall& inner, const SeenCall& outer) {
    return inner.thread == outer.thread && inner.depth >= outer.depth &&
           inner.startSlot >= outer.startSlot && inner.endSlot <= outer.endSlot;
}

// Driver calls of other threads by thread, those that touch the stretch.
std::map<uint32_t, Calls> othersCalls(const Scene& scene, Nanoseconds begin, Nanoseconds end,
                                      uint32_t ioThread) {
    std::map<uint32_t, Calls> calls;
    for (const SeenCall& call : scene.calls) {
        if (call.thread == ioThread || isServer(call.code)) continue;
        if (call.start < end && call.end > begin) calls[call.thread].push_back(call);
    }
    return calls;
}

// Of a call and those inside it, the one that is innermost for the longest part of the stretch.
SeenCall innermost(const Calls& calls, const SeenCall& outer, Nanoseconds begin, Nanoseconds end) {
    std::vector<Nanoseconds> own(calls.size());
    std::map<uint32_t, size_t> latest;  // by depth
    for (size_t i = 0; i < calls.size(); ++i) {
        const SeenCall& call = calls[i];
        own[i] = overlap(call, begin, end);
        latest[call.depth] = i;
        const auto around = call.depth == 0 ? latest.end() : latest.find(call.depth - 1);
        if (around != latest.end() && isInside(call, calls[around->second])) {
            own[around->second] -= own[i];
        }
    }
    SeenCall best = outer;
    Nanoseconds most = -1;
    for (size_t i = 0; i < calls.size(); ++i) {
        if (own[i] < most || !isInside(calls[i], outer)) continue;
        most = own[i];
        best = calls[i];
    }
    return best;
}

std::optional<SeenCall> engineChangeAround(const Calls& calls, const SeenCall& culprit) {
    std::optional<SeenCall> change;
    for (const SeenCall& call : calls) {
        if (engineChangeOf(call.code) == EngineChange::none || !isInside(culprit, call)) continue;
        if (!call.finished) continue;
        if (!change || call.depth < change->depth) change = call;
    }
    return change;
}

// Follows a culprit that waited itself to whoever it waited for.
void followChain(const Scene& scene, Holder& holder, const Silence& silence, uint32_t ioThread) {
    std::set<uint32_t> threads{ioThread, holder.culprit.thread};
    for (int step = 0; step < kLongestChain; ++step) {
        const SeenCall& waiter = holder.culprit;
        Nanoseconds begin = waiter.start;
        Nanoseconds longest = 0;
        Nanoseconds wait = 0;
        for (const SeenRecord& record : scene.records) {
            if (record.thread != waiter.thread || record.slot <= waiter.startSlot ||
                record.slot > waiter.endSlot) {
                continue;
            }
            if (record.time - begin > longest) {
                longest = record.time - begin;
                wait = begin;
            }
            begin = record.time;
        }
        if (longest < silence.length() / 2) return;
        const Nanoseconds goesOn = wait + longest;
        const auto others = othersCalls(scene, wait, goesOn, ioThread);
        std::optional<SeenCall> found;
        for (const auto& [thread, calls] : others) {
            if (threads.contains(thread)) continue;
            for (const SeenCall& call : calls) {
                const Nanoseconds after = goesOn - call.end;
                if (!call.finished || after < -kTracedAfter || after > kChainReach) continue;
                if (call.start - wait > longest / 5) continue;
                if (!found || std::abs(after) < std::abs(goesOn - found->end) ||
                    isInside(*found, call)) {
                    found = call;
                }
            }
        }
        if (!found) return;
        holder.evidence.push_back(holder.culprit.startSlot);
        holder.evidence.push_back(holder.culprit.endSlot);
        holder.culprit = innermost(others.at(found->thread), *found, wait, goesOn);
        threads.insert(found->thread);
    }
}

// How a call fits the end and the beginning of a silence.
struct Fit {
    Nanoseconds before;  // from the silence's begin to the call's
    Nanoseconds after;   // from the call's end to where the thread goes on
    bool inTime(Nanoseconds most) const {
        return after >= -kTracedAfter && before + std::max<Nanoseconds>(0, after) <= most;
    }
};

Fit fitOf(const SeenCall& call, const Silence& silence) {
    return {std::max<Nanoseconds>(0, call.start - silence.begin), silence.end - call.end};
}

// Of the silence, up to a moment.
Nanoseconds coveredBy(const SeenCall& call, const Silence& silence, Nanoseconds until) {
    return overlap(call, silence.begin, std::min(until, silence.end));
}

Holder makeHolder(const Calls& calls, const SeenCall& outer, const Silence& silence,
                  Nanoseconds until) {
    Holder holder{.outer = outer, .culprit = innermost(calls, outer, silence.begin, until)};
    holder.covered = coveredBy(outer, silence, until);
    holder.engineChange = engineChangeAround(calls, holder.culprit);
    return holder;
}

// The holder among a thread's calls, if there is one.
std::optional<Holder> holderAmong(const Calls& calls, const Silence& silence, const Usual& usual) {
    const Nanoseconds excess = silence.length() - std::min(usual.median, silence.length());
    const auto least = static_cast<Nanoseconds>(kLeastCover * static_cast<double>(excess));
    const SeenCall* outer = nullptr;
    for (const SeenCall& call : calls) {
        if (!call.finished || overlap(call, silence.begin, silence.end) < least) continue;
        if (!fitOf(call, silence).inTime(usual.most())) continue;
        if (outer == nullptr || call.depth < outer->depth) outer = &call;
    }
    if (outer != nullptr) return makeHolder(calls, *outer, silence, outer->end);
    const SeenCall* lastStep = nullptr;
    Nanoseconds most = 0;
    for (const SeenCall& call : calls) {
        // A call that never ends has lost its end, and proves nothing.
        if (!call.finished || call.end <= silence.end + kTracedAfter) continue;
        const Fit whole = fitOf(call, silence);
        for (const SeenCall& step : calls) {
            if (!step.finished || step.depth <= call.depth || !isInside(step, call)) continue;
            const Fit fit{whole.before, silence.end - step.end};
            const Nanoseconds covered = overlap(call, silence.begin, step.end);
            if (!fit.inTime(usual.most()) || covered < least) continue;
            if (outer != nullptr && covered <= most) continue;
            outer = &call;
            lastStep = &step;
            most = coveredBy(call, silence, step.end);
        }
    }
    if (outer == nullptr) return {};
    Holder holder = makeHolder(calls, *outer, silence, lastStep->end);
    holder.byStep = true;
    return holder;
}

// Two holders, one after the other.
std::optional<Holder> holdersInTurn(const std::map<uint32_t, Calls>& others, const Silence& silence,
                                    const Usual& usual) {
    const auto least = static_cast<Nanoseconds>(kLeastPart * static_cast<double>(silence.length()));
    struct Pair {
        const Calls* calls;  // of the one with most of the silence
        const SeenCall* holder;
        const SeenCall* other;
        Nanoseconds covered;
    };
    // With the calls of their threads.
    using Candidate = std::pair<const Calls*, const SeenCall*>;
    std::vector<Candidate> firsts;
    std::vector<Candidate> lasts;
    for (const auto& [thread, calls] : others) {
        for (const SeenCall& call : calls) {
            if (!call.finished || overlap(call, silence.begin, silence.end) < least) continue;
            const Fit fit = fitOf(call, silence);
            if (fit.before <= usual.most()) firsts.emplace_back(&calls, &call);
            if (fit.after >= -kTracedAfter && fit.after <= usual.most()) {
                lasts.emplace_back(&calls, &call);
            }
        }
    }
    std::optional<Pair> best;
    for (const auto& [lastCalls, last] : lasts) {
        for (const auto& [firstCalls, first] : firsts) {
            if (firstCalls == lastCalls || first->end >= last->end) continue;
            const Nanoseconds between = std::max<Nanoseconds>(0, last->start - first->end);
            const Nanoseconds left = fitOf(*first, silence).before + between +
                                     std::max<Nanoseconds>(0, fitOf(*last, silence).after);
            const Nanoseconds covered = silence.length() - left;
            if (left > usual.most() || (best && covered <= best->covered)) continue;
            const bool lastHasMost = overlap(*last, silence.begin, silence.end) >=
                                     overlap(*first, silence.begin, silence.end);
            best = lastHasMost ? Pair{lastCalls, last, first, covered}
                               : Pair{firstCalls, first, last, covered};
        }
    }
    if (!best) return {};
    Holder holder = makeHolder(*best->calls, *best->holder, silence, best->holder->end);
    holder.covered = best->covered;
    holder.evidence = {best->other->startSlot, best->other->endSlot};
    return holder;
}

// Tells whether two of a thread's records are in one call of it.
class CallsAround {
  public:
    explicit CallsAround(const Scene& scene) {
        // In the order of their starts.
        for (const SeenCall& call : scene.calls) {
            if (!call.finished || call.code == kIoThread) continue;
            std::vector<Reach>& reaches = ofThread_[call.thread];
            const uint64_t before = reaches.empty() ? 0 : reaches.back().endSlot;
            reaches.push_back({call.startSlot, std::max(before, call.endSlot)});
        }
    }

    bool areInOne(const SeenRecord& first, const SeenRecord& second) const {
        const auto found = ofThread_.find(second.thread);
        if (found == ofThread_.end()) return false;
        const auto after =
            std::ranges::upper_bound(found->second, first.slot, {}, &Reach::startSlot);
        return after != found->second.begin() && std::prev(after)->endSlot >= second.slot;
    }

  private:
    struct Reach {
        uint64_t startSlot;
        uint64_t endSlot;  // the last of all calls that start here or before
    };
    std::map<uint32_t, std::vector<Reach>> ofThread_;
};

}  // namespace

std::vector<Holder> findHolders(const Scene& scene, const Silence& silence, const Usual& usual,
                                uint32_t ioThread) {
    const auto others = othersCalls(scene, silence.begin, silence.end, ioThread);
    std::vector<Holder> holders;
    for (const auto& [thread, calls] : others) {
        const auto holder = holderAmong(calls, silence, usual);
        if (holder) holders.push_back(*holder);
    }
    if (holders.empty()) {
        const auto inTurn = holdersInTurn(others, silence, usual);
        if (inTurn) holders.push_back(*inTurn);
    }
    std::ranges::stable_sort(holders, [](const Holder& a, const Holder& b) {
        if (a.byStep != b.byStep) return b.byStep;
        return a.covered > b.covered;
    });
    for (Holder& holder : holders) followChain(scene, holder, silence, ioThread);
    return holders;
}

std::vector<SeenCall> engineChangesIn(const Scene& scene, Nanoseconds begin, Nanoseconds end,
                                      uint32_t ioThread) {
    std::vector<SeenCall> changes;
    for (const auto& [thread, calls] : othersCalls(scene, begin, end, ioThread)) {
        for (const SeenCall& call : calls) {
            if (engineChangeOf(call.code) == EngineChange::none || !call.finished) continue;
            const bool isInner = std::ranges::any_of(
                changes, [&](const SeenCall& outer) { return isInside(call, outer); });
            if (!isInner) changes.push_back(call);
        }
    }
    std::ranges::stable_sort(changes, [&](const SeenCall& a, const SeenCall& b) {
        return overlap(a, begin, end) > overlap(b, begin, end);
    });
    return changes;
}

BusyProcessor workOn(const Scene& scene, const Silence& silence, uint32_t ioThread) {
    BusyProcessor busy{.cpu = silence.cpuAfter};
    struct Work {
        Nanoseconds shown = 0;
        Nanoseconds called = 0;
        size_t records = 0;
        const SeenRecord* first = nullptr;
        const SeenRecord* before = nullptr;
    };
    const CallsAround around(scene);
    std::map<uint32_t, Work> works;
    const Nanoseconds close = std::max(kClose, silence.length() / kCloseParts);
    Nanoseconds shownTo = silence.begin;
    Nanoseconds calledTo = silence.begin;
    for (const SeenRecord& record : scene.records) {
        if (record.thread == ioThread || record.cpu != busy.cpu) continue;
        if (record.time > silence.end + kTracedAfter) break;
        Work& work = works[record.thread];
        const SeenRecord* const before = std::exchange(work.before, &record);
        if (record.time <= silence.begin) continue;
        if (work.first == nullptr) work.first = &record;
        ++work.records;
        ++busy.records;
        if (before == nullptr) continue;
        const bool inCall = around.areInOne(*before, record);
        const Nanoseconds length = record.time - before->time;
        if (!inCall && length > kClose) continue;
        const Nanoseconds end = std::min(record.time, silence.end);
        // Each moment counts once, whoever worked.
        const auto gain = [&](Nanoseconds& to) {
            const Nanoseconds from = std::max({before->time, silence.begin, to});
            to = std::max(to, end);
            return std::max<Nanoseconds>(0, end - from);
        };
        if (length <= close) {
            const Nanoseconds shown = gain(shownTo);
            work.shown += shown;
            busy.shown += shown;
        }
        const Nanoseconds called = gain(calledTo);
        work.called += called;
        busy.called += called;
    }
    const Work* busiest = nullptr;
    for (const auto& [thread, work] : works) {
        if (work.first == nullptr) continue;
        if (busiest != nullptr &&
            std::pair(work.called, work.records) <= std::pair(busiest->called, busiest->records)) {
            continue;
        }
        busiest = &work;
        busy.thread = thread;
    }
    if (busiest == nullptr) return busy;
    busy.firstSlot = busiest->first->slot;
    busy.firstCode = codeOf(busiest->first->debugid);
    // A call that began there, and whose thread has been nowhere else since.
    uint64_t elsewhere = 0;
    for (const SeenRecord& record : scene.records) {
        if (record.thread != busy.thread || record.slot >= busy.firstSlot) continue;
        if (record.cpu != busy.cpu) elsewhere = std::max(elsewhere, record.slot);
    }
    for (const SeenCall& call : scene.calls) {
        if (call.thread != busy.thread || call.cpu != busy.cpu || !call.finished) continue;
        if (call.code == kIoThread) continue;
        if (call.startSlot < std::max(elsewhere, scene.records.front().slot)) continue;
        if (call.end <= silence.begin || call.start >= silence.end) continue;
        busy.firstCall = call;
        break;  // calls stand in the order of their starts
    }
    return busy;
}

}  // namespace sonaprobe
