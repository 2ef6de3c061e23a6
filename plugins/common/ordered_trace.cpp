// Sorting what several processors have written, and a clock that goes on over every step.

#include "common/ordered_trace.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace sonaprobe::plugins {

namespace {

__extension__ using Wide = __int128;

constexpr Wide kSecond = 1'000'000'000;
// Times stand still from here, some 146 years.
constexpr int64_t kLatest = int64_t{1} << 62;

// Processors write records out of order by some milliseconds. Nothing later than this or by more
// records is waited for.
constexpr uint64_t kSecondsToWait = 1;
constexpr size_t kRecordsToWait = 65'536;

// The divisor in force; 0 where there is none.
uint64_t frequencyOf(double ticksPerMicrosecond) {
    constexpr double kMost = 1e13;
    if (!(ticksPerMicrosecond >= 1)) return 0;
    return static_cast<uint64_t>(std::min(ticksPerMicrosecond, kMost)) * 1'000'000;
}

// The last cycle before time stands still.
uint64_t lastCycleOf(const Clock& clock) {
    const Wide cycles = (Wide{kLatest} - clock.zero) * clock.frequency / kSecond;
    return static_cast<uint64_t>(std::clamp<Wide>(cycles, 0, UINT64_MAX));
}

}  // namespace

int64_t Clock::nanoseconds(uint64_t cycle) const {
    const Wide time = Wide{cycle} * kSecond / frequency + zero;
    return static_cast<int64_t>(std::min<Wide>(time, kLatest));
}

int OrderedTrace::open(const char* path) {
    sonaprobe_reader* reader = nullptr;
    const int result = sonaprobe_open_file(&reader, path);
    reader_.reset(reader);
    return result;
}

bool OrderedTrace::stepsBack(uint64_t tick, uint64_t thread) {
    const bool isLate = tick < latest_;
    if (isLate && latest_ - tick > kSecondsToWait * frequency_) return true;
    if (Place{stretch_, tick} < last_) return true;
    const auto [found, isNew] = lastOfThread_.try_emplace(thread, Place{stretch_, tick});
    const Place before = found->second;
    found->second = {stretch_, tick};
    return !isNew && before.stretch == stretch_ && tick < before.tick;
}

void OrderedTrace::take(const sonaprobe_event* event) {
    Pending next{};
    sonaprobe_event_keep(event, &next.record);
    const auto& words = next.record.words;
    if (std::all_of(std::begin(words), std::end(words), [](uint64_t word) { return word == 0; })) {
        ++missing_;
        return;
    }
    const uint64_t tick = sonaprobe_event_time(event);
    const uint64_t thread = sonaprobe_event_thread(event);
    const uint64_t frequency = frequencyOf(next.record.ticks_per_microsecond);
    const bool hasNewDivisor = frequency != 0 && frequency != frequency_;
    if (hasNewDivisor || stepsBack(tick, thread)) {
        if (hasNewDivisor) frequency_ = frequency;
        ++stretch_;
        latest_ = tick;
        lastOfThread_[thread] = {stretch_, tick};
    }
    latest_ = std::max(latest_, tick);
    next.missing = std::exchange(missing_, 0);
    next.frequency = frequency_;
    pending_.emplace_hint(pending_.end(), Place{stretch_, tick}, next);
}

void OrderedTrace::readOne() {
    const sonaprobe_event* event = nullptr;
    end_ = sonaprobe_next(reader_.get(), &event);
    const uint64_t invalid = sonaprobe_invalid_slots(reader_.get());
    missing_ += invalid - std::exchange(invalidSlots_, invalid);
    if (end_ == 1) {
        take(event);
    } else if (sonaprobe_cut_bytes(reader_.get()) > 0) {
        ++missing_;
    }
}

bool OrderedTrace::isFirstSettled() const {
    if (pending_.empty()) return false;
    const Place& first = pending_.begin()->first;
    return first.stretch < stretch_ || latest_ - first.tick > kSecondsToWait * frequency_ ||
           pending_.size() >= kRecordsToWait;
}

// Lets time go on from the last record to one of the next stretch, or begin.
void OrderedTrace::setClock(const Place& place, uint64_t frequency) {
    if (clock_.frequency == 0) {
        clock_.frequency = frequency;
        lastCycle_ = place.tick <= lastCycleOf(clock_) ? place.tick : 0;
    } else if (frequency != clock_.frequency) {
        clock_ = {clock_.number + 1, frequency, clock_.nanoseconds(lastCycle_)};
        lastCycle_ = 0;
    }
    last_ = place;
}

int OrderedTrace::next(OrderedRecord& record) {
    while (end_ == 1 && !isFirstSettled()) readOne();
    if (pending_.empty()) return end_;
    const auto first = pending_.begin();
    const Place& place = first->first;
    const Pending& next = first->second;
    if (clock_.frequency == 0 || place.stretch != last_.stretch) setClock(place, next.frequency);
    const Wide cycle = Wide{lastCycle_} + (place.tick - last_.tick);
    lastCycle_ = static_cast<uint64_t>(std::min<Wide>(cycle, lastCycleOf(clock_)));
    last_ = place;
    record = {next.record, next.missing, clock_, lastCycle_};
    pending_.erase(first);
    return 1;
}

}  // namespace sonaprobe::plugins
