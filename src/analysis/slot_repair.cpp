// Reads what is kept until it is sound. A sound file is read once.

#include "analysis/slot_repair.h"

#include <utility>

namespace sonaprobe {

bool SlotRepair::take(const Found& found) {
    if (again_) return takeAgain(found);
    const bool keep = slots_.take(found);
    if (keep) kept_.add(found.slotNumber());
    return keep;
}

// Slots stand where they were written; what looks like one anywhere else would be invented.
bool SlotRepair::takeAgain(const Found& found) {
    const bool inPlace =
        found.isSlot() && found.order == ByteOrder::own && found.offset % sizeof(TraceRecord) == 0;
    const uint64_t first = before_.at(found.slotNumber());
    if (inPlace && check_.take(found)) {
        kept_.add(first);
        return true;
    }
    const uint64_t end = found.offset + found.length;
    slots_.findings().add({.kind = FindingKind::garbage,
                           .slot = first,
                           .lastSlot = before_.at((end - 1) / sizeof(TraceRecord)),
                           .bytes = found.length});
    return false;
}

bool SlotRepair::finish() {
    bool mayDiffer = kept_.size() < before_.size();
    if (!again_) {
        slots_.finish();
        mayDiffer = !slots_.findings().none();
    }
    if (!mayDiffer) return false;
    again_ = true;
    check_ = {};
    before_ = std::exchange(kept_, {});
    return true;
}

}  // namespace sonaprobe
