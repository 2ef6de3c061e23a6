// Findings about slots, one after the other.

#include "analysis/slot_check.h"

namespace sonaprobe {

namespace {

constexpr uint64_t kSlot = sizeof(TraceRecord);

// More is lost than the rest of one slot: garbage, rather than bytes in between or gone.
constexpr uint64_t kLeastGarbage = 2 * kSlot;

}  // namespace

bool SlotCheck::take(const Found& found) {
    if (damage_) settleDamage(found.isSlot());
    const uint64_t slot = found.slotNumber();
    bool keep = false;
    if (found.isSlot()) {
        ++slots_;
        if (found.what != Found::What::empty) takeOrder(found);
    }
    switch (found.what) {
        case Found::What::record:
            takeRecords(slot, 1);
            keep = true;
            break;
        case Found::What::divisor: keep = takeDivisor(found); break;
        case Found::What::invalid:
            findings_.add({.kind = FindingKind::invalidSlots, .slot = slot, .lastSlot = slot});
            break;
        case Found::What::empty:
            findings_.add({.kind = FindingKind::emptySlots, .slot = slot, .lastSlot = slot});
            break;
        case Found::What::damage: damage_ = found; break;
        case Found::What::cutSlot:
            findings_.add({.kind = FindingKind::cutSlot,
                           .slot = slot,
                           .lastSlot = slot,
                           .bytes = found.length});
            break;
    }
    return keep;
}

void SlotCheck::take(const RecordRun& run) {
    if (damage_) settleDamage(true);
    slots_ += run.records.size();
    order_ = ByteOrder::own;
    takeRecords(run.firstSlot, run.records.size());
}

void SlotCheck::settleDamage(bool slotsGoOn) {
    if (!damage_) return;
    const uint64_t end = damage_->offset + damage_->length;
    Finding finding{.kind = FindingKind::garbage,
                    .slot = damage_->slotNumber(),
                    .lastSlot = (end - 1) / kSlot,
                    .bytes = damage_->length};
    const bool misaligned = slotsGoOn && damage_->length % kSlot != 0;
    if (!misaligned || damage_->length >= kLeastGarbage) findings_.add(finding);
    if (misaligned) {
        finding.kind = FindingKind::misaligned;
        finding.lastSlot = finding.slot;
        finding.goesOnAt = end;
        findings_.add(finding);
    }
    damage_.reset();
}

void SlotCheck::takeOrder(const Found& slot) {
    const uint64_t number = slot.slotNumber();
    if (slot.order == ByteOrder::swapped && order_ == ByteOrder::own) {
        findings_.add({.kind = FindingKind::otherByteOrder, .slot = number, .lastSlot = number});
    } else if (slot.order == ByteOrder::swapped) {
        Finding* const known = findings_.last(FindingKind::otherByteOrder);
        if (known != nullptr) known->lastSlot = number;
    }
    order_ = slot.order;
}

bool SlotCheck::takeDivisor(const Found& found) {
    const uint64_t slot = found.slotNumber();
    const uint64_t value = found.slot.timestamp;
    if (value != 0 && divisor_ != value) {
        divisor_ = value;
        return true;
    }
    const FindingKind kind = value == 0 ? FindingKind::zeroDivisor : FindingKind::repeatedDivisor;
    findings_.add({.kind = kind, .slot = slot, .lastSlot = slot});
    return false;
}

void SlotCheck::takeRecords(uint64_t firstSlot, uint64_t count) {
    records_ += count;
    if (divisor_) return;
    const uint64_t last = firstSlot + count - 1;
    Finding* const known = findings_.last(FindingKind::noDivisor);
    if (known != nullptr) {
        known->lastSlot = last;
    } else {
        findings_.add({.kind = FindingKind::noDivisor, .slot = firstSlot, .lastSlot = last});
    }
}

}  // namespace sonaprobe
