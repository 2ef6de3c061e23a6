// Finds stretches.

#include "analysis/slot_numbers.h"

#include <algorithm>
#include <iterator>

namespace sonaprobe {

uint64_t SlotNumbers::at(uint64_t place) const {
    const auto after = std::ranges::upper_bound(stretches_, place, {}, &Stretch::place);
    const Stretch& stretch = *std::prev(after);
    return stretch.slot + (place - stretch.place);
}

std::optional<uint64_t> SlotNumbers::placeOf(uint64_t slot) const {
    if (size_ == 0) return std::nullopt;
    const uint64_t place = placeNear(slot);
    return at(place) == slot ? std::optional(place) : std::nullopt;
}

uint64_t SlotNumbers::placeNear(uint64_t slot) const {
    const auto after = std::ranges::upper_bound(stretches_, slot, {}, &Stretch::slot);
    if (after == stretches_.begin()) return 0;
    const Stretch& stretch = *std::prev(after);
    const uint64_t end = after == stretches_.end() ? size_ : after->place;
    return std::min(stretch.place + (slot - stretch.slot), end - 1);
}

}  // namespace sonaprobe
