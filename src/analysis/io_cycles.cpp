// Gathers I/O cycles, and what happens around dropouts.

#include "analysis/io_cycles.h"

#include <algorithm>
#include <utility>

#include "analysis/slot.h"

namespace sonaprobe {

namespace {

// What is kept of the past while no dropout has come: enough for the longest budgets in use.
constexpr Nanoseconds kRemembered = 1'000'000'000;
constexpr size_t kMostRemembered = size_t{1} << 19;
constexpr uint64_t kForgetEvery = 256;  // records

// A scene reaches from so many cycles before its dropout, for dropouts that were carried on, to
// half a cycle after it, for records that come late.
constexpr int kCyclesBefore = 7;
constexpr Nanoseconds kUsualPeriod = 10'666'667;
constexpr Nanoseconds kLongestPeriod = 130'000'000;
constexpr Nanoseconds kLateRecords = 5'000'000;

// Records and calls that are looked at for all scenes together: thousands of dropouts in the
// busiest traces.
constexpr size_t kMostSearched = size_t{1} << 23;

// A scene of more cannot be searched in reasonable time.
constexpr size_t kMostRecordsOfScene = size_t{1} << 16;
constexpr size_t kMostCallsOfScene = size_t{1} << 14;

SeenCall seenCallOf(const Call& call, Nanoseconds end, uint64_t endSlot, bool finished) {
    return {.start = bounded(call.start),
            .end = bounded(end),
            .startSlot = call.startSlot,
            .endSlot = endSlot,
            .code = call.code,
            .cpu = call.cpu,
            .thread = call.thread,
            .depth = call.depth,
            .finished = finished};
}

// Up to the first item that has this time or a later one, and those above what is kept at most.
template <class T>
void forgetBefore(Nanoseconds from, SlidingWindow<T>& window, Nanoseconds T::*timeOf) {
    size_t old = window.size() - std::min(window.size(), kMostRemembered);
    while (old < window.size() && window[old].*timeOf < from) ++old;
    window.pop_front(old);
}

}  // namespace

void IoObserver::take(const TraceRecord& slot) {
    orphan_ = false;
    const Moment* const moment = tracker_.take(slot);
    const TraceClock& clock = tracker_.clock();
    if (clock.stepsBack() != restarts_ || clock.ticksPerMicrosecond() != divisor_) {
        restarts_ = clock.stepsBack();
        divisor_ = clock.ticksPerMicrosecond();
        ++scale_;
    }
    if (moment == nullptr) {
        afterInvalid_ = afterInvalid_ || kindOf(slot) == SlotKind::invalid;
        return;
    }
    ++trace_.records;
    if (isServer(slot.debugid)) ++trace_.serverRecords;
    const Nanoseconds time = bounded(moment->time);
    if (trace_.records > 1 && time >= latest_) {
        trace_.gaps.add(time - latest_);
        trace_.gaps.becomeSketch();
    }
    latest_ = std::max(latest_, time);
    recent_.push_back({.time = time,
                       .slot = moment->slot,
                       .debugid = slot.debugid,
                       .thread = moment->thread,
                       .cpu = slot.cpuid,
                       .orphan = orphan_,
                       .afterInvalid = std::exchange(afterInvalid_, false)});
    if (!pending_.empty()) completeScenes(false);
    if (trace_.records % kForgetEvery == 0) forget();
}

IoTrace IoObserver::finish() {
    completeScenes(true);
    tracker_.finish();  // which ends the calls that are open in scenes, too
    const TraceClock& clock = tracker_.clock();
    for (uint32_t thread = 0; thread < clock.threads(); ++thread) {
        trace_.threadIds.push_back(clock.threadId(thread));
    }
    for (IoThread& io : trace_.threads) io.id = clock.threadId(io.thread);
    trace_.restarts = clock.stepsBack();
    trace_.assumedDivisor = clock.assumedDivisor();
    return std::move(trace_);
}

IoObserver::Server& IoObserver::serverOf(uint32_t thread) {
    if (thread >= servers_.size()) servers_.resize(thread + 1);
    Server& server = servers_[thread];
    if (std::exchange(server.scale, scale_) != scale_) server.told.reset();
    return server;
}

// A host time on the trace's time scale, the two clocks taken for one.
Nanoseconds IoObserver::hostTime(uint64_t word, uint64_t timestamp, Nanoseconds time) const {
    return bounded(saturatedSum(time, tracker_.clock().rate().between(timestamp, word)));
}

uint32_t IoObserver::opened(const TraceRecord& record, const Call& call, const Call*) {
    if (call.code == kIoThread) {
        // What the thread was told before it ended last time is over.
        serverOf(call.thread).told.reset();
        serverOf(call.thread).rate = record.arg2;
    }
    if (call.code == kIoCycle) beginCycle(record, call);
    return 0;
}

void IoObserver::beginCycle(const TraceRecord& record, const Call& call) {
    Server& server = serverOf(call.thread);
    if (server.io == SIZE_MAX) {
        server.io = trace_.threads.size();
        trace_.threads.push_back({.thread = call.thread});
    }
    IoThread& io = trace_.threads[server.io];
    if (server.rate != 0) io.rate = server.rate;
    const Nanoseconds begin = bounded(call.start);
    if (record.arg2 != 0) {
        const Nanoseconds host = hostTime(record.arg2, record.timestamp, begin);
        if (host != begin) io.clockShifts.push_back(host - begin);
    }
    const std::optional<SampleTime> told = std::exchange(server.told, std::nullopt);
    ToldBy toldBy = ToldBy::nobody;
    if (told && !io.cycles.empty() && io.cycles.back().tells && io.cycles.back().told == *told) {
        toldBy = ToldBy::cycleBefore;
    } else if (told) {
        toldBy = ToldBy::orphanEnd;
        io.toldByOrphans.push_back({io.cycles.size(), *told});
    }
    server.open = &io.cycles.push_back({.beginSlot = call.startSlot,
                                        .begin = begin,
                                        .end = begin,
                                        .sample = record.arg1,
                                        .frames = record.arg3,
                                        .toldBy = toldBy});
    server.clients = 0;
}

void IoObserver::closed(const Call& call, const Call*, const Closing& closing) {
    const bool finished = closing.how == CallEnd::finished;
    recentCalls_.push_back(seenCallOf(call, closing.time, closing.slot, finished));
    if (call.startSlot <= lastAwaited_) tellScenes(recentCalls_.back());

    if (call.code == kIoCycle) {
        if (finished) {
            endCycle(*closing.end, call, closing);
        } else {
            serverOf(call.thread).open = nullptr;
        }
        return;
    }
    IoCycle* const cycle = openCycle(call.thread);
    if (cycle == nullptr || call.start < cycle->begin) return;
    if (!finished) {
        cycle->broken = true;
        return;
    }
    Server& server = servers_[call.thread];
    const OwnerKey owner = call.code == kClient ? clientKey(server.clients++) : callKey(call.code);
    addTime(server, owner, bounded(closing.selfOf(call)));
}

void IoObserver::tellScenes(const SeenCall& call) {
    const auto awaited = awaited_.find(call.startSlot);
    if (awaited == awaited_.end()) return;
    for (const size_t overload : awaited->second) {
        std::vector<SeenCall>& calls = trace_.overloads[overload].scene.calls;
        *std::ranges::lower_bound(calls, call.startSlot, {}, &SeenCall::startSlot) = call;
    }
    awaited_.erase(awaited);
}

// Of the open cycle. The first four billion cycles tell what is usual.
void IoObserver::addTime(const Server& server, OwnerKey owner, Nanoseconds time) {
    IoThread& io = trace_.threads[server.io];
    const size_t cycle = io.cycles.size() - 1;
    if (cycle > UINT32_MAX) return;
    const auto [place, isNew] = ownerPlaces_.try_emplace({owner, server.io}, io.owners.size());
    if (isNew) io.owners.push_back({.owner = owner});
    OwnerTimes& times = io.owners[place->second];
    times.times.push_back(time);
    times.cycles.push_back(static_cast<uint32_t>(cycle));
}

void IoObserver::endCycle(const TraceRecord& end, const Call& call, const Closing& closing) {
    Server& server = serverOf(call.thread);
    tell(server, end, closing.time);
    IoCycle* const cycle = server.open;
    if (cycle == nullptr) return;
    cycle->finished = true;
    cycle->end = bounded(closing.time);
    cycle->endSlot = closing.slot;
    addTime(server, kCycleItself, bounded(closing.selfOf(call)));
    cycle->tells = server.told.has_value();
    if (server.told) cycle->told = *server.told;
    server.open = nullptr;
}

// What an end of a cycle says of the next one's time.
void IoObserver::tell(Server& server, const TraceRecord& end, Nanoseconds time) {
    if (end.arg2 == 0) return;
    const SampleTime told{end.arg1, hostTime(end.arg2, end.timestamp, time)};
    if (server.io != SIZE_MAX) {
        const IoThread& io = trace_.threads[server.io];
        const auto before = io.toldBefore(io.cycles.size() - 1);
        if (before) server.period = told.host - before->host;
    }
    server.told = told;
}

void IoObserver::point(const TraceRecord& record, const Moment& moment) {
    if (record.debugid == (kOverload | 1)) takeOverload(record, moment);
    if (record.debugid == (kZeroTimeStamp | 1)) {
        const double ticks =
            record.arg4 == 0 ? 0
                             : static_cast<double>(record.arg3) / static_cast<double>(record.arg4);
        const auto divisor = static_cast<double>(tracker_.clock().ticksPerMicrosecond());
        trace_.stamps.push_back(
            {.at = {record.arg1, hostTime(record.arg2, record.timestamp, moment.time)},
             .time = bounded(moment.time),
             .slot = moment.slot,
             .thread = moment.thread,
             .cpu = record.cpuid,
             .perFrame = ticks * 1000 / divisor});
    }
}

void IoObserver::orphanEnd(const TraceRecord& record, const Moment& moment) {
    orphan_ = true;
    const uint32_t code = codeOf(record.debugid);
    if (!isServer(code)) ++trace_.orphanEnds;
    if (code == kIoCycle) tell(serverOf(moment.thread), record, moment.time);
    IoCycle* const cycle = openCycle(moment.thread);
    if (cycle != nullptr && code == kClient) cycle->broken = true;
}

void IoObserver::takeOverload(const TraceRecord& record, const Moment& moment) {
    Server& server = serverOf(moment.thread);
    Overload overload{.time = bounded(moment.time), .slot = moment.slot, .thread = moment.thread};
    if (server.open != nullptr) overload.cycle = trace_.threads[server.io].cycles.size() - 1;
    if (record.arg3 != 0) overload.targetSample = record.arg3;
    if (record.arg4 != 0) {
        overload.targetHost = hostTime(record.arg4, record.timestamp, moment.time);
        if (record.arg2 > record.arg4) {
            overload.overrun = bounded(tracker_.clock().rate().between(record.arg4, record.arg2));
        }
    }
    const Nanoseconds period =
        server.period > 0 && server.period < kLongestPeriod ? server.period : kUsualPeriod;
    pending_.push_back({trace_.overloads.size(), overload.time - kCyclesBefore * period,
                        overload.time + std::max(period / 2, kLateRecords)});
    trace_.overloads.push_back(std::move(overload));
}

void IoObserver::forget() {
    const Nanoseconds keepFrom =
        (pending_.empty() ? latest_ : std::min(latest_, pending_.front().from)) - kRemembered;
    forgetBefore(keepFrom, recent_, &SeenRecord::time);
    forgetBefore(recent_.empty() ? latest_ : recent_[0].time, recentCalls_, &SeenCall::end);
}

void IoObserver::completeScenes(bool all) {
    while (!pending_.empty() && (all || pending_.front().to < latest_)) {
        const Pending next = pending_.front();
        pending_.pop_front();
        auto scene = sceneFrom(next.overload, next.from, next.to);
        if (scene) {
            trace_.overloads[next.overload].scene = std::move(*scene);
        } else {
            ++trace_.unseenDropouts;
        }
    }
}

// Nothing where there is too much to search.
std::optional<Scene> IoObserver::sceneFrom(size_t overload, Nanoseconds from, Nanoseconds to) {
    if (searched_ > kMostSearched || tracker_.openCalls().size() > kMostCallsOfScene) return {};
    Scene scene;
    for (size_t i = recent_.size(); i-- > 0;) {
        const SeenRecord& record = recent_[i];
        if (record.time < from - kLateRecords) break;
        ++searched_;
        if (from <= record.time && record.time <= to) scene.records.push_back(record);
        if (scene.records.size() > kMostRecordsOfScene) return {};
    }
    std::ranges::reverse(scene.records);
    std::ranges::stable_sort(scene.records, {}, &SeenRecord::time);
    for (size_t i = recentCalls_.size(); i-- > 0;) {
        const SeenCall& call = recentCalls_[i];
        if (call.end < from - kLateRecords) break;
        ++searched_;
        if (from <= call.end && call.start <= to) scene.calls.push_back(call);
        if (scene.calls.size() > kMostCallsOfScene) return {};
    }
    searched_ += tracker_.openCalls().size();
    tracker_.openCalls().forEach([&](const Call& call) {
        const SeenCall seen = seenCallOf(call, call.start, call.startSlot, false);
        if (seen.start > to) return;
        awaited_[seen.startSlot].push_back(overload);
        lastAwaited_ = std::max(lastAwaited_, seen.startSlot);
        scene.calls.push_back(seen);
    });
    std::ranges::sort(scene.calls, {}, &SeenCall::startSlot);
    return scene;
}

}  // namespace sonaprobe
