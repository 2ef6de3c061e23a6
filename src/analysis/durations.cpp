// Percentiles by nearest rank, of lengths or of their sketch.

#include "analysis/durations.h"

#include <algorithm>
#include <utility>

namespace sonaprobe {

void DurationSketch::makeRoomAt(size_t place) { counts_.resize((place / kSteps + 1) * kSteps); }

uint64_t DurationSketch::atRank(uint64_t rank) const {
    uint64_t seen = 0;
    uint64_t middle = 0;
    for (size_t place = 0; place < counts_.size() && seen < rank; ++place) {
        if (counts_[place] == 0) continue;
        seen += counts_[place];
        const size_t leftOut = place < 2 * kSteps ? 0 : place / kSteps - 1;
        const uint64_t least = (place - leftOut * kSteps) << leftOut;
        middle = least + ((1ULL << leftOut) - 1) / 2;
    }
    return middle;
}

void Durations::keep(uint64_t length) {
    lengths_.push_back(length);
    shorter_ = 0;
}

void Durations::sketch() {
    sketch_ = std::make_unique<DurationSketch>();
    for (const uint64_t length : lengths_) sketch_->add(length);
    lengths_ = {};
}

Nanoseconds Durations::percentile(unsigned percent) {
    // Written so that it holds for counts that a hundredfold would overflow.
    const uint64_t rank = count_ / 100 * percent + (count_ % 100 * percent + 99) / 100;
    if (sketch_ != nullptr) {
        return std::min(max_, static_cast<Nanoseconds>(sketch_->atRank(rank)));
    }
    const auto begin = lengths_.begin();
    const auto place = begin + static_cast<std::ptrdiff_t>(rank - 1);
    const auto known = begin + static_cast<std::ptrdiff_t>(std::exchange(shorter_, rank - 1));
    std::nth_element(place < known ? begin : known, place, lengths_.end());
    return static_cast<Nanoseconds>(*place);
}

}  // namespace sonaprobe
