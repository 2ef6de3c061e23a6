// Keeps those silences that are the longest since some slot.

#include "analysis/silences.h"

#include <algorithm>

namespace sonaprobe {

void Silences::keep(const Silence& silence) {
    while (!falling_.empty() && falling_.back().length <= silence.length) falling_.pop_back();
    falling_.push_back(silence);
    if (falling_.size() > kMostKept) falling_.pop_front();
}

const Silence* Silences::longestSince(uint64_t slot) const {
    const auto first = std::ranges::lower_bound(falling_, slot, {}, &Silence::after);
    return first == falling_.end() ? nullptr : &*first;
}

}  // namespace sonaprobe
