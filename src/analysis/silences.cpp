// Keeps those silences that are the longest since some slot.

#include "analysis/silences.h"

#include <iterator>

namespace sonaprobe {

// Of the newest ones those stay that are longer than all after them, of the others those that are
// longer than all of these.
void Silences::settle() {
    std::array<Silence, kNewest> rising;
    size_t count = 0;
    Nanoseconds longest = 0;
    for (size_t n = newestSize_; n-- > 0;) {
        if (newest_[n].length <= longest) continue;
        longest = newest_[n].length;
        rising[count++] = newest_[n];
    }
    while (!falling_.empty() && falling_.back().length <= longest) falling_.pop_back();
    if (falling_.size() > kMostKept - kNewest) {
        falling_.erase(falling_.begin(), falling_.begin() + kMostKept / 2);
    }
    const auto end = rising.begin() + static_cast<std::ptrdiff_t>(count);
    falling_.insert(falling_.end(), std::reverse_iterator(end), rising.rend());
    newestSize_ = 0;
}

const Silence* Silences::longestSince(uint64_t slot) {
    settle();
    const auto first = std::ranges::lower_bound(falling_, slot, {}, &Silence::after);
    return first == falling_.end() ? nullptr : &*first;
}

}  // namespace sonaprobe
