// Samples a trace.

#include "analysis/trace_sample.h"

#include <algorithm>

namespace sonaprobe {

void TimeCounts::add(Nanoseconds sinceBegin) {
    while (sinceBegin / length_ >= static_cast<Nanoseconds>(kStretches)) lengthen(2 * length_);
    counts_[static_cast<size_t>(sinceBegin / length_)] += 1;
}

void TimeCounts::lengthen(Nanoseconds length) {
    while (length_ < length) {
        for (size_t i = 0; i < kStretches; ++i) {
            counts_[i] = 2 * i < kStretches ? counts_[2 * i] + counts_[2 * i + 1] : 0;
        }
        length_ *= 2;
    }
}

void TraceSample::take(Nanoseconds time) {
    if (records_++ == 0) first_ = last_ = time;
    first_ = std::min(first_, time);
    last_ = std::max(last_, time);
}

// What began before the first selected record counts as if at it.
Nanoseconds TraceSample::sinceBegin(Nanoseconds time) const {
    constexpr Nanoseconds kMost = std::numeric_limits<Nanoseconds>::max() / 2;
    return std::clamp<Nanoseconds>(saturatedDifference(time, first_), 0, kMost);
}

EventSample& TraceSample::eventOf(uint32_t code) {
    const auto [found, isNew] =
        eventByCode_.try_emplace(code, static_cast<uint32_t>(events_.size()));
    if (isNew) events_.emplace_back().code = code;
    return events_[found->second];
}

const EventSample* TraceSample::find(uint32_t code) const {
    const auto found = eventByCode_.find(code);
    return found == eventByCode_.end() ? nullptr : &events_[found->second];
}

void TraceSample::addCall(const Call& call, const Closing& closing) {
    EventSample& event = eventOf(call.code);
    ++event.calls;
    event.occurrences.add(sinceBegin(call.start));
    if (closing.how != CallEnd::finished) return;
    const Nanoseconds self = closing.selfOf(call);
    addTo(event.self, self);
    if (event.finished++ % event.keptOneOf != 0) return;
    event.selfTimes.push_back(static_cast<uint64_t>(self));
    if (event.selfTimes.size() < kMostTimes) return;
    for (size_t i = 0; 2 * i < event.selfTimes.size(); ++i) {
        event.selfTimes[i] = event.selfTimes[2 * i];
    }
    event.selfTimes.resize(event.selfTimes.size() / 2);
    event.keptOneOf *= 2;
}

void TraceSample::addPoint(uint32_t code, Nanoseconds time) {
    EventSample& event = eventOf(code);
    ++event.points;
    event.occurrences.add(sinceBegin(time));
}

void TraceSample::addFailure(uint32_t code, Nanoseconds time) {
    EventSample& event = eventOf(code);
    ++event.failures;
    event.failed.add(sinceBegin(time));
}

}  // namespace sonaprobe
