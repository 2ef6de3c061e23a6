// Reads a trace for the calls that can be merged.

#include "scope/timeline/thinning.h"

#include <algorithm>
#include <tsl/robin_map.h>

#include "analysis/event_traits.h"
#include "scope/records.h"
#include "scope/timeline/bars.h"

namespace sonaprobe::scope::timeline {

namespace {

// Dropouts have so much around them whole, or less where they are many: all of that together is at
// most a quarter of what a page may hold.
constexpr Nanoseconds kNear = 50'000'000;

// A stretch of time is at most so much of the span: the narrowest screen's pixel.
constexpr Nanoseconds kLeastStretches = 400;

// Records that a stretch has, at a guess, once it is thinned: a call's two, another's inside.
constexpr uint64_t kRecordsOfStretch = 4;

// Records that are kept because of dropouts.
class NearDropouts {
  public:
    NearDropouts(const Survey& survey, const IoAnswer& answer, uint64_t most) {
        for (const Dropout& dropout : answer.dropouts) {
            times_.push_back(dropout.time);
            const std::vector<uint64_t>& slots = dropout.verdict.evidence;
            evidence_.insert(evidence_.end(), slots.begin(), slots.end());
            if (dropout.verdict.culprit) evidence_.push_back(dropout.verdict.culprit->slot);
        }
        std::ranges::sort(times_);
        std::ranges::sort(evidence_);
        if (times_.empty()) return;
        const double share = static_cast<double>(most) / static_cast<double>(survey.records) / 4;
        const auto span = static_cast<double>(survey.end - survey.begin);
        near_ = std::min(
            kNear, static_cast<Nanoseconds>(span * share / 2 / static_cast<double>(times_.size())));
    }

    bool has(uint64_t slot, Nanoseconds time) const {
        if (times_.empty()) return false;
        const auto dropout = std::ranges::lower_bound(times_, time - near_);
        if (dropout != times_.end() && *dropout <= time + near_) return true;
        return std::ranges::binary_search(evidence_, slot);
    }

  private:
    std::vector<Nanoseconds> times_;
    std::vector<uint64_t> evidence_;
    Nanoseconds near_ = 0;
};

// Calls are thinned from the outermost inwards: a short one is kept or merged with all that is
// inside. So the records of one that is not known to be long yet wait for its end; those of a
// stretch at most, for each thread.
class Thinner final : public CallSink {
  public:
    Thinner(const Survey& survey, const NearDropouts& nearDropouts, Nanoseconds stretch)
        : survey_(&survey), nearDropouts_(&nearDropouts), thinning_{.stretch = stretch} {}

    void take(const TraceRecord& slot) {
        const uint64_t number = tracker_.slots();
        shown_ = kindOf(slot) == SlotKind::record && survey_->shows(number);
        if (shown_) {
            isFailing_ = isFailure(slot);
            ++thinning_.kept;
        }
        tracker_.take(slot);
    }
    Thinning finish() {
        tracker_.finish();
        thinning_.isMerged.resize(tracker_.slots());
        return std::move(thinning_);
    }

  private:
    // What is kept or merged as one: a call with all that is inside, or a point.
    struct Unit {
        uint32_t row = 0;
        Nanoseconds begin = 0;
        Nanoseconds length = 0;
        size_t first = 0;  // of its slots among the thread's waiting ones
        bool kept = false;
    };
    struct Frame {
        Nanoseconds begin = 0;
        size_t firstUnit = 0;  // among the thread's waiting ones
        size_t firstSlot = 0;
        bool kept = false;
    };
    struct Thread {
        std::vector<Frame> open;
        std::vector<Unit> units;  // inside calls that may be short
        std::vector<uint64_t> slots;
    };
    // The unit of a stretch that is kept so far.
    struct Row {
        Nanoseconds stretch = 0;
        Nanoseconds length = -1;  // of the unit; -1: none
        std::vector<uint64_t> slots;
    };

    uint32_t opened(const TraceRecord& record, const Call& call, const Call*) override;
    void closed(const Call& call, const Call*, const Closing& closing) override;
    void point(const TraceRecord&, const Moment& moment) override { takePoint(moment); }
    void orphanEnd(const TraceRecord&, const Moment& moment) override { takePoint(moment); }

    void takePoint(const Moment& moment);
    void takeUnit(Thread& thread, const Unit& unit, Nanoseconds now);
    void decide(Thread& thread, size_t firstUnit);
    void decide(const Unit& unit, std::span<const uint64_t> slots);
    void merge(std::span<const uint64_t> slots);
    Thread& threadOf(uint32_t number) {
        if (number >= threads_.size()) threads_.resize(number + 1);
        return threads_[number];
    }
    bool isKept(uint64_t slot, Nanoseconds time) const {
        return isFailing_ || nearDropouts_->has(slot, time);
    }

    const Survey* survey_;
    const NearDropouts* nearDropouts_;
    Thinning thinning_;
    CallTracker tracker_{*this};
    Rows rows_;
    std::vector<Row> units_;  // by row
    std::vector<Thread> threads_;
    tsl::robin_map<uint32_t, Nanoseconds> longest_;  // by code, so far
    bool shown_ = false;
    bool isFailing_ = false;
};

uint32_t Thinner::opened(const TraceRecord&, const Call& call, const Call*) {
    if (!shown_) return 0;
    Thread& thread = threadOf(call.thread);
    const Nanoseconds begin = bounded(call.start);
    thread.open.push_back(
        {begin, thread.units.size(), thread.slots.size(), isKept(call.startSlot, begin)});
    thread.slots.push_back(call.startSlot);
    return 1;
}

void Thinner::closed(const Call& call, const Call*, const Closing& closing) {
    if (call.tag == 0) return;
    Thread& thread = threadOf(call.thread);
    const Frame frame = thread.open.back();
    thread.open.pop_back();
    const Nanoseconds end = bounded(closing.time);
    const Nanoseconds length = end - frame.begin;
    const bool isLong = length >= thinning_.stretch;
    if (isLong) {
        decide(thread, frame.firstUnit);
        thread.slots.resize(frame.firstSlot);
    }
    thread.units.resize(frame.firstUnit);
    bool kept = frame.kept || isLong || closing.how != CallEnd::finished;
    if (closing.how == CallEnd::finished) {
        if (!isLong) thread.slots.push_back(closing.slot);
        Nanoseconds& longest = longest_[call.code];
        kept = kept || length > longest || isKept(closing.slot, end);
        longest = std::max(longest, length);
    }
    const auto depth = static_cast<uint32_t>(thread.open.size());
    takeUnit(
        thread,
        {rows_.numberOf({call.thread, depth, false}), frame.begin, length, frame.firstSlot, kept},
        end);
}

void Thinner::takePoint(const Moment& moment) {
    if (!shown_) return;
    Thread& thread = threadOf(moment.thread);
    const auto open = static_cast<uint32_t>(thread.open.size());
    const Nanoseconds time = bounded(moment.time);
    const Unit unit{.row = rows_.numberOf({moment.thread, open == 0 ? 0 : open - 1, true}),
                    .begin = time,
                    .first = thread.slots.size(),
                    .kept = isKept(moment.slot, time)};
    thread.slots.push_back(moment.slot);
    takeUnit(thread, unit, time);
}

// Decides on what waits inside the innermost open call once that is known to be long; on what is in
// no call at once.
void Thinner::takeUnit(Thread& thread, const Unit& unit, Nanoseconds now) {
    thread.units.push_back(unit);
    if (thread.open.empty()) {
        decide(thread, 0);
        thread.slots.clear();
        return;
    }
    Frame& around = thread.open.back();
    around.kept = around.kept || unit.kept;
    if (now - around.begin < thinning_.stretch) return;
    decide(thread, around.firstUnit);
    thread.slots.resize(around.firstSlot);
}

void Thinner::decide(Thread& thread, size_t firstUnit) {
    for (size_t i = firstUnit; i < thread.units.size(); ++i) {
        const Unit& unit = thread.units[i];
        const size_t end =
            i + 1 < thread.units.size() ? thread.units[i + 1].first : thread.slots.size();
        if (!unit.kept) decide(unit, std::span(thread.slots).subspan(unit.first, end - unit.first));
    }
    thread.units.resize(firstUnit);
}

void Thinner::decide(const Unit& unit, std::span<const uint64_t> slots) {
    if (unit.row >= units_.size()) units_.resize(unit.row + 1);
    Row& row = units_[unit.row];
    const Nanoseconds stretch = unit.begin / thinning_.stretch;
    if (stretch == row.stretch && unit.length <= row.length) {
        merge(slots);
        return;
    }
    if (stretch == row.stretch && row.length >= 0) merge(row.slots);
    row.stretch = stretch;
    row.length = unit.length;
    row.slots.assign(slots.begin(), slots.end());
}

void Thinner::merge(std::span<const uint64_t> slots) {
    const uint64_t last = slots.back();
    if (last >= thinning_.isMerged.size()) thinning_.isMerged.resize(last + 1);
    for (const uint64_t slot : slots) thinning_.isMerged[slot] = true;
    thinning_.merged += slots.size();
    thinning_.kept -= slots.size();
}

Thinning thinnedBy(const TraceOptions& trace, const Survey& survey,
                   const NearDropouts& nearDropouts, Nanoseconds stretch) {
    Thinner thinner(survey, nearDropouts, stretch);
    Input input(trace);
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) thinner.take(slot);
    }
    return thinner.finish();
}

}  // namespace

Thinning thinned(const TraceOptions& trace, const Survey& survey, IoObserving& io, uint64_t most) {
    if (survey.records <= most) return {};
    const NearDropouts nearDropouts(survey, io.answer(), most);
    const Nanoseconds longest = (survey.end - survey.begin) / kLeastStretches;
    unsigned bits = 0;
    while (Nanoseconds{1} << bits < longest && survey.stretches[bits] > most / kRecordsOfStretch) {
        ++bits;
    }
    for (;; ++bits) {
        const Nanoseconds stretch = Nanoseconds{1} << bits;
        Thinning thinning = thinnedBy(trace, survey, nearDropouts, stretch);
        if (thinning.kept <= most || stretch >= longest) return thinning;
    }
}

}  // namespace sonaprobe::scope::timeline
