// The slots of a file that may be damaged. A place where slots begin is known by two slots in a row
// without any doubt; in a file of unknown codes by more of them that have little.

#include "analysis/slot_finder.h"

#include <algorithm>

#include "analysis/slot.h"

namespace sonaprobe {

namespace {

constexpr size_t kSlot = sizeof(TraceRecord);
constexpr size_t kUnknownRun = 8;        // slots
constexpr size_t kLeastUnknownRun = 4;   // at the end of the file
constexpr size_t kSearched = 2 * kSlot;  // bytes from an odd slot on
constexpr size_t kLookAhead = kSearched + kUnknownRun * kSlot;
constexpr size_t kGroup = 16;                          // records that are looked at together
constexpr size_t kOneByOne = 64;                       // records, before groups are tried again
constexpr uint64_t kMostDisorder = uint64_t{1} << 24;  // ticks: beyond, the clock has gone back

bool isRecord(const TraceRecord& slot) { return kindOf(slot) == SlotKind::record; }

Found::What whatIs(const TraceRecord& slot) {
    switch (kindOf(slot)) {
        case SlotKind::divisor: return Found::What::divisor;
        case SlotKind::invalid: return Found::What::invalid;
        case SlotKind::empty: return Found::What::empty;
        default: return Found::What::record;
    }
}

// How many of the first records, in whole groups, are ordinary and follow each other in time, none
// far from the one before. `before` is a time stamp.
size_t ordinaryInOrder(std::span<const TraceRecord> records, uint64_t before) {
    size_t count = 0;
    for (; records.size() - count >= kGroup; count += kGroup) {
        uint64_t oddBits = 0;
        for (const TraceRecord& record : records.subspan(count, kGroup)) {
            oddBits |= Plausibility::oddBits(record);
            oddBits |= (record.timestamp - before) / kFarOn;
            oddBits |= static_cast<uint64_t>(record.timestamp < before);
            before = record.timestamp;
        }
        if (oddBits != 0) break;
    }
    return count;
}

}  // namespace

std::span<std::byte> SlotFinder::room(size_t bytes) {
    const auto begin = buffer_.begin();
    std::copy(begin + static_cast<ptrdiff_t>(at_), begin + static_cast<ptrdiff_t>(end_), begin);
    bytesBefore_ += at_;
    end_ -= at_;
    at_ = 0;
    if (buffer_.size() < end_ + bytes) buffer_.resize(end_ + bytes);
    return std::span(buffer_).subspan(end_, bytes);
}

void SlotFinder::feed(std::span<const std::byte> bytes) {
    std::ranges::copy(bytes, room(bytes.size()).begin());
    took(bytes.size());
}

std::optional<Found> SlotFinder::next() {
    if (damageBegin_) return search();
    if (!ended_ && left() < kLookAhead) return std::nullopt;
    return follow();
}

RecordRun SlotFinder::plainRecords() {
    if (damageBegin_ || isBegin_ || afterEmpty_ || !last_ || order_ != ByteOrder::own) return {};
    const std::byte* const here = buffer_.data() + at_;
    if (reinterpret_cast<uintptr_t>(here) % alignof(TraceRecord) != 0) return {};
    const std::span all(reinterpret_cast<const TraceRecord*>(here), left() / kSlot);
    size_t count = ordinaryInOrder(all, latest_);
    const bool inOrder = count > 0;
    if (inOrder) {
        last_ = latest_ = all[count - 1].timestamp;
    } else {
        for (const TraceRecord& slot : all.first(std::min(all.size(), kOneByOne))) {
            if (!Plausibility::isOrdinary(slot) || !isNear(*last_, slot.timestamp)) break;
            takeTime(slot.timestamp);
            ++count;
        }
    }
    const RecordRun run{(bytesBefore_ + at_) / kSlot, all.first(count), inOrder};
    plausibility_.learnOrdinary(count);
    slots_ += count;
    certainSlots_ += count;
    at_ += count * kSlot;
    return run;
}

bool SlotFinder::isTrace() const {
    return certainSlots_ > 0 || 2 * slots_ * kSlot > bytesBefore_ + at_;
}

TraceRecord SlotFinder::slotAtPlace(Place place) const {
    return slotAt(buffer_.data() + place.at, place.order);
}

// Whether the time stamp fits neither the record before nor the one after.
bool SlotFinder::isFar(const TraceRecord& slot) const {
    if (!last_ || !isRecord(slot) || isNear(*last_, slot.timestamp)) return false;
    if (left() < 2 * kSlot) return true;
    const TraceRecord next = slotAtPlace({at_ + kSlot, order_});
    return !isRecord(next) || !isNear(slot.timestamp, next.timestamp);
}

// Whether the first of two slots after damage is the rest of a broken one, its low bytes lost: the
// second's time goes on from the last record, and its own does not lie between them.
bool SlotFinder::isTorn(const TraceRecord& first, const TraceRecord& second) const {
    if (!last_ || !isRecord(first) || !isRecord(second)) return false;
    if (second.timestamp + disorder_ < latest_) return false;
    return first.timestamp + disorder_ < latest_ || first.timestamp > second.timestamp + disorder_;
}

// Whether there is no doubt of two slots in a row, of one that ends the file, or of a divisor.
bool SlotFinder::familiarSlotsBeginAt(Place place) const {
    const TraceRecord first = slotAtPlace(place);
    const SlotKind kind = kindOf(first);
    if (kind != SlotKind::record && kind != SlotKind::divisor) return false;
    if (plausibility_.doubts(first) != 0) return false;
    if (kind == SlotKind::divisor) return true;
    if (end_ - place.at < 2 * kSlot) return !last_ || isNear(*last_, first.timestamp);
    const TraceRecord second = slotAtPlace({place.at + kSlot, place.order});
    if (kindOf(second) == SlotKind::empty) return true;
    if (plausibility_.doubts(second) != 0) return false;
    if (isRecord(second) && !isNear(first.timestamp, second.timestamp)) return false;
    return !isTorn(first, second);
}

// Whether there is little doubt of several slots in a row, in a file that has few certain ones.
bool SlotFinder::unknownSlotsBeginAt(Place place) const {
    if (2 * certainSlots_ > slots_) return false;
    const size_t run = std::min((end_ - place.at) / kSlot, kUnknownRun);
    if (run < kLeastUnknownRun) return false;
    uint64_t before = slotAtPlace(place).timestamp;
    bool clockRuns = false;
    for (size_t n = 0; n < run; ++n) {
        const TraceRecord slot = slotAtPlace({place.at + n * kSlot, place.order});
        if (!isRecord(slot) || plausibility_.doubts(slot) > 1 || !isNear(before, slot.timestamp)) {
            return false;
        }
        clockRuns = clockRuns || slot.timestamp != before;
        before = slot.timestamp;
    }
    return clockRuns;
}

bool SlotFinder::slotsBeginAt(Place place) const {
    if (familiarSlotsBeginAt(place)) return true;
    // A byte too early, a code may be taken for the processor; a byte too late seldom passes.
    return unknownSlotsBeginAt(place) && !unknownSlotsBeginAt({place.at + 1, place.order}) &&
           !isTorn(slotAtPlace(place), slotAtPlace({place.at + kSlot, place.order}));
}

// Where else than here slots begin, soon after an odd slot.
std::optional<SlotFinder::Place> SlotFinder::otherBegin() const {
    const TraceRecord here = slotAtPlace({at_, order_});
    const bool clockJumps = last_ && !isNear(*last_, here.timestamp);
    for (size_t skipped = 0; skipped < kSearched && skipped + kSlot <= left(); ++skipped) {
        for (const ByteOrder order : {order_, otherThan(order_)}) {
            if (order == order_ && skipped % kSlot == 0) continue;
            const Place place{at_ + skipped, order};
            if (familiarSlotsBeginAt(place)) return place;
            if (clockJumps && isNear(*last_, slotAtPlace(place).timestamp) && slotsBeginAt(place)) {
                return place;
            }
        }
    }
    const Place swapped{at_, otherThan(order_)};
    if (!unknownSlotsBeginAt({at_, order_}) && unknownSlotsBeginAt(swapped)) return swapped;
    return std::nullopt;
}

// The doubts about the slot at at_ in its place.
unsigned SlotFinder::doubtsHere(const TraceRecord& slot) const {
    const unsigned doubts = plausibility_.doubts(slot) + (isFar(slot) ? 1 : 0);
    if (!afterEmpty_ || left() < 2 * kSlot) return doubts;
    return isTorn(slot, slotAtPlace({at_ + kSlot, order_})) ? kNoSlot : doubts;
}

std::optional<Found> SlotFinder::follow() {
    if (left() == 0) return std::nullopt;
    if (left() < kSlot) return takeRest(Found::What::cutSlot);
    const TraceRecord slot = slotAtPlace({at_, order_});
    if (isBegin_ || kindOf(slot) == SlotKind::empty) return takeSlot(slot);
    const unsigned doubts = doubtsHere(slot);
    if (doubts == 0) return takeSlot(slot);
    if (doubts < kNoSlot) {
        if (const std::optional<Place> place = otherBegin()) return goOnAt(*place);
        const bool beforeDamage =
            left() >= 2 * kSlot &&
            plausibility_.doubts(slotAtPlace({at_ + kSlot, order_})) >= kNoSlot;
        if (doubts < kNoSlot - 1 || !beforeDamage) return takeSlot(slot);
    }
    damageBegin_ = bytesBefore_ + at_;
    return search();
}

std::optional<Found> SlotFinder::search() {
    for (; left() >= kSlot; ++at_) {
        if (!ended_ && left() < kLookAhead) return std::nullopt;
        const bool inStep = (bytesBefore_ + at_ - *damageBegin_) % kSlot == 0;
        if (inStep && kindOf(slotAtPlace({at_, order_})) == SlotKind::empty) {
            return goOnAt({at_, order_});
        }
        for (const ByteOrder order : {order_, otherThan(order_)}) {
            if (slotsBeginAt({at_, order})) return goOnAt({at_, order});
        }
    }
    if (!ended_) return std::nullopt;
    return takeRest(Found::What::damage);
}

std::optional<Found> SlotFinder::goOnAt(Place place) {
    const uint64_t begin = damageBegin_.value_or(bytesBefore_ + at_);
    at_ = place.at;
    order_ = place.order;
    damageBegin_.reset();
    isBegin_ = true;
    const uint64_t length = bytesBefore_ + at_ - begin;
    if (length == 0) return follow();
    return Found{Found::What::damage, order_, begin, length, {}};
}

Found SlotFinder::takeSlot(const TraceRecord& slot) {
    const Found found{whatIs(slot), order_, bytesBefore_ + at_, kSlot, slot};
    at_ += kSlot;
    const unsigned doubts = plausibility_.doubts(slot);
    const bool isCertain = doubts == 0;
    if (found.what != Found::What::empty) slots_++;
    if (found.what == Found::What::divisor && isCertain) certainSlots_++;
    isBegin_ = false;
    afterEmpty_ = found.what == Found::What::empty;
    if (found.what != Found::What::record) return found;

    if (isCertain) certainSlots_++;
    if (doubts <= 1) plausibility_.learn(slot);
    takeTime(slot.timestamp);
    return found;
}

// A record's time stamp.
void SlotFinder::takeTime(uint64_t timestamp) {
    if (last_ && timestamp < latest_ && latest_ - timestamp <= kMostDisorder) {
        disorder_ = std::max(disorder_, latest_ - timestamp);
    } else {
        latest_ = timestamp;
    }
    last_ = timestamp;
}

Found SlotFinder::takeRest(Found::What what) {
    const uint64_t end = bytesBefore_ + end_;
    const uint64_t begin = damageBegin_.value_or(bytesBefore_ + at_);
    at_ = end_;
    damageBegin_.reset();
    return Found{what, order_, begin, end - begin, {}};
}

}  // namespace sonaprobe
