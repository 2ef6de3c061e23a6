// Searches slots by halves. Threads may be out of order by so much as is no step back yet.

#include "scope/sorted_search.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "analysis/slot.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

constexpr uint64_t kLeastHead = FileBytes::kHeadBytes / sizeof(TraceRecord);
constexpr uint64_t kRead = Input::kBlockSlots;  // so many are read rather than searched

class Search {
  public:
    Search(const FileBytes& file, bool kernelTime)
        : file_(&file), slots_(file.size() / sizeof(TraceRecord)) {
        readHead();
        if (kernelTime) firstTick_ = 0;
    }

    // The first slots, with the first record in them, as the blocks in which a file is read: what
    // it is recognised by is the same as in a whole one.
    uint64_t head() const {
        const uint64_t more = head_ <= kLeastHead ? 0 : head_ - kLeastHead;
        return std::min(slots_, kLeastHead + (more + kRead - 1) / kRead * kRead);
    }

    // A slot with no record before it, from the head on, that is as late as this.
    uint64_t beginOf(Nanoseconds from) {
        return narrowed(head(), saturatedDifference(from, TraceClock::kMostDisorder)).first;
    }

    // A slot with no record at it or after it that is earlier than this.
    uint64_t endOf(Nanoseconds to, uint64_t begin) {
        return narrowed(begin, saturatedSum(to, TraceClock::kMostDisorder)).second;
    }

    uint64_t slots() const { return slots_; }
    uint64_t divisor() const { return divisor_; }

  private:
    struct FoundRecord {
        uint64_t slot;
        uint64_t tick;
    };

    // Two slots near each other, with the first record of this time or later between them.
    std::pair<uint64_t, uint64_t> narrowed(uint64_t low, Nanoseconds time) {
        uint64_t high = slots_;
        while (high - low > kRead) {
            const uint64_t middle = low + (high - low) / 2;
            const auto found = recordFrom(middle, high);
            if (found && timeOf(*found) < time) {
                low = found->slot + 1;
            } else {
                high = middle;
            }
        }
        return {low, high};
    }

    void readHead() {
        head_ = firstOf(0, slots_, [&](const TraceRecord& slot) {
            if (slot.debugid == kDivisorMarker && slot.timestamp != 0) divisor_ = slot.timestamp;
            firstTick_ = slot.timestamp;
            return kindOf(slot) == SlotKind::record;
        });
        ++head_;
    }

    // The first of these slots of which this holds, or `end`.
    template <class Holds>
    uint64_t firstOf(uint64_t begin, uint64_t end, const Holds& holds) {
        for (uint64_t at = begin; at < end;) {
            const size_t count = std::min<uint64_t>(block_.size(), end - at);
            const auto room = std::as_writable_bytes(std::span(block_).first(count));
            const size_t got = file_->readAt(at * sizeof(TraceRecord), room) / sizeof(TraceRecord);
            if (got == 0) return end;
            for (size_t n = 0; n < got; ++n) {
                if (holds(block_[n])) return at + n;
            }
            at += got;
        }
        return end;
    }

    std::optional<FoundRecord> recordFrom(uint64_t begin, uint64_t end) {
        uint64_t tick = 0;
        const uint64_t found = firstOf(begin, end, [&](const TraceRecord& slot) {
            tick = slot.timestamp;
            return kindOf(slot) == SlotKind::record;
        });
        if (found == end) return std::nullopt;
        return FoundRecord{found, tick};
    }

    Nanoseconds timeOf(const FoundRecord& record) const {
        return TickRate(divisor_).between(firstTick_, record.tick);
    }

    const FileBytes* file_;
    uint64_t slots_;
    uint64_t head_ = 0;
    uint64_t firstTick_ = 0;
    uint64_t divisor_ = TraceClock::kAssumedDivisor;
    std::array<TraceRecord, kLeastHead> block_{};
};

}  // namespace

void searchTime(Input& input, const Selection& selection, const TraceOptions& trace) {
    const Criteria& criteria = selection.criteria();
    const ByteSource& source = input.source();
    if (!criteria.from && !criteria.to) return;
    if (source.packing() != nullptr || !source.file().repeatable()) return;
    Search search(source.file(), trace.kernelTime);
    if (search.slots() <= kRead) return;
    const uint64_t begin = criteria.from ? search.beginOf(*criteria.from) : search.head();
    const uint64_t end = criteria.to ? search.endOf(*criteria.to, begin) : search.slots();
    input.readOnly({search.head(), begin, end, search.divisor()});
}

void confirmSorted(const Input& input, const TraceClock& clock) {
    if (!input.part()) return;
    const uint64_t divisor = input.part()->divisor;
    const uint64_t changes = divisor == TraceClock::kAssumedDivisor ? 0 : 1;
    const bool otherDivisor =
        clock.ticksPerMicrosecond() != divisor || clock.divisorChanges() > changes;
    if (clock.stepsBack() == 0 && !otherDivisor) return;
    throw Failure{input.source().name() + ": " +
                  (otherDivisor ? "another divisor takes over" : "time steps back") +
                  ", so it cannot be searched; leave out --sorted"};
}

}  // namespace sonaprobe::scope
