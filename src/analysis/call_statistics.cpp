// Counts and times by group.

#include "analysis/call_statistics.h"

#include <algorithm>
#include <array>
#include <span>

#include "analysis/event_names.h"

namespace sonaprobe {

namespace {

// Of a call's tag: whether it is inside no call of the same group, and whether its start is
// selected. The rest is its group.
constexpr uint32_t kOutermost = 1U << 31;
constexpr uint32_t kSelected = 1U << 30;
constexpr uint32_t kGroup = kSelected - 1;

constexpr uint64_t nestingKey(uint32_t thread, uint32_t group) {
    return uint64_t{thread} << 32 | group;
}

}  // namespace

Nanoseconds CallGroup::mean() const {
    return finished() == 0 ? 0 : static_cast<Nanoseconds>(total / Wide{finished()});
}

void CallGroup::tellPercentiles() {
    if (finished() == 0) return;
    const auto percentiles = durations.percentiles(std::array{50U, 90U, 99U});
    p50 = percentiles[0];
    p90 = percentiles[1];
    p99 = percentiles[2];
}

GroupKey CallStatistics::keyOf(const Identity& identity) const {
    const auto low = static_cast<uint32_t>(identity.word);
    switch (by_) {
        case GroupBy::event:
        case GroupBy::driver:
        case GroupBy::recordClass: return {.code = low};
        case GroupBy::thread: return {.thread = low};
        case GroupBy::cpu: return {.cpu = low};
        case GroupBy::object: return {.object = identity.word, .hasObject = identity.isObject};
        case GroupBy::threadAndEvent:
            return {.code = low, .thread = static_cast<uint32_t>(identity.word >> 32)};
    }
    return {};
}

uint32_t CallStatistics::driverCodeOf(uint32_t code) {
    const auto [known, isNew] = driverCodes_.try_emplace(code, code);
    if (isNew) known.value() = firstCodes_.try_emplace(driverOf(code), code).first->second;
    return known->second;
}

uint32_t CallStatistics::searchGroup(const Identity& identity) {
    const auto [found, isNew] =
        groupByIdentity_.try_emplace(identity, static_cast<uint32_t>(groups_.size()));
    if (isNew) {
        groups_.emplace_back().key = keyOf(identity);
        if (by_ == GroupBy::thread) groups_.back().busy = 0;
    }
    return found->second;
}

// Whether the call that opens is inside no other of its group.
bool CallStatistics::isOutermost(const Call& call, uint32_t group) {
    if (call.thread >= shallow_.size()) shallow_.resize(call.thread + 1);
    ShallowCalls& shallow = shallow_[call.thread];
    const uint32_t depth = std::min(call.depth, kShallow);
    const auto around = std::span(shallow.groups).first(depth);
    const uint32_t bit = bitOf(group);
    bool isInside =
        (shallow.bits[depth] & bit) != 0 && std::ranges::find(around, group) != around.end();
    if (depth < kShallow) {
        shallow.groups[depth] = group;
        shallow.bits[depth + 1] = shallow.bits[depth] | bit;
    } else {
        const auto nesting = nesting_.try_emplace(nestingKey(call.thread, group), 0).first;
        if (nesting.value()++ > 0) isInside = true;
    }
    return !isInside;
}

uint32_t CallStatistics::open(const TraceRecord& record, const Call& call, bool selected) {
    const uint32_t group = numberOf(record, call.thread);
    return group | (isOutermost(call, group) ? kOutermost : 0) | (selected ? kSelected : 0);
}

bool CallStatistics::close(const Call& call, const Closing& closing, bool endSelected) {
    const uint32_t number = call.tag & kGroup;
    const bool outermost = (call.tag & kOutermost) != 0;
    if (call.depth >= kShallow) {
        const auto nesting = nesting_.find(nestingKey(call.thread, number));
        if (--nesting.value() == 0) nesting_.erase(nesting);
    }
    if ((call.tag & kSelected) == 0 && !endSelected) return false;

    CallGroup& group = groups_[number];
    ++group.calls;
    const Nanoseconds length = closing.lengthOf(call);
    const Nanoseconds self = closing.selfOf(call);
    if (group.busy && call.depth == 0) addTo(*group.busy, length);
    switch (closing.how) {
        case CallEnd::finished:
            group.durations.add(length);
            group.total += length;
            addTo(group.self, self);
            if (outermost) addTo(group.outermost, length);
            ++finished_;
            keepRoom(group);
            break;
        case CallEnd::cutOff:
            ++group.cutOff;
            addTo(group.cutOffSelf, self);
            break;
        case CallEnd::unfinished:
            ++group.unfinished;
            addTo(group.unfinishedSelf, self);
            break;
    }
    return true;
}

// To be asked after each finished call of the group.
void CallStatistics::keepRoom(CallGroup& group) {
    if (finished_ == exactCalls_ + 1) {
        for (CallGroup& each : groups_) each.durations.becomeSketch();
    } else if (finished_ > exactCalls_) {
        group.durations.becomeSketch();
    }
}

void CallStatistics::countPoint(const TraceRecord& record, uint32_t thread) {
    ++groups_[numberOf(record, thread)].points;
}

void CallStatistics::countOrphanEnd(const TraceRecord& record, uint32_t thread) {
    ++groups_[numberOf(record, thread)].orphanEnds;
}

void CallStatistics::countFailure(const TraceRecord& record, uint32_t thread) {
    ++groups_[numberOf(record, thread)].failures;
}

bool CallStatistics::isSketch() const {
    return std::ranges::any_of(groups_,
                               [](const auto& group) { return group.durations.isSketch(); });
}

}  // namespace sonaprobe
