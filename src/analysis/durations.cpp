// Percentiles by nearest rank, of lengths or of their sketch.

#include "analysis/durations.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace sonaprobe {

void DurationSketch::makeRoomAt(size_t place) { counts_.resize((place / kSteps + 1) * kSteps); }

DurationSketch::Size DurationSketch::atRank(uint64_t rank) const {
    Size size{};
    uint64_t seen = 0;
    for (size_t place = 0; place < counts_.size() && seen < rank; ++place) {
        if (counts_[place] == 0) continue;
        const size_t leftOut = place < 2 * kSteps ? 0 : place / kSteps - 1;
        const uint64_t least = (place - leftOut * kSteps) << leftOut;
        size = {least, least + ((1ULL << leftOut) - 1), seen};
        seen += counts_[place];
    }
    return size;
}

void Durations::keep(uint64_t length) {
    lengths_.push_back(length);
    shorter_ = 0;
}

void Durations::bringSketchUpToDate() {
    if (sketch_ == nullptr) sketch_ = std::make_unique<DurationSketch>();
    for (; sketched_ < lengths_.size(); ++sketched_) sketch_->add(lengths_[sketched_]);
}

void Durations::forgetLengths() {
    bringSketchUpToDate();
    lengths_ = {};
    isSketch_ = true;
}

// Sorts them as far as needed.
uint64_t Durations::amongFew(uint64_t rank) {
    const auto begin = lengths_.begin();
    const auto place = begin + static_cast<std::ptrdiff_t>(rank - 1);
    const auto known = begin + static_cast<std::ptrdiff_t>(std::exchange(shorter_, rank - 1));
    std::nth_element(place < known ? begin : known, place, lengths_.end());
    return *place;
}

// Sorts those of one size.
uint64_t Durations::amongMany(uint64_t rank) {
    bringSketchUpToDate();
    const DurationSketch::Size size = sketch_->atRank(rank);
    std::vector<uint64_t> alike;
    std::ranges::copy_if(lengths_, std::back_inserter(alike),
                         [&](uint64_t length) { return size.holds(length); });
    const auto place = alike.begin() + static_cast<std::ptrdiff_t>(rank - size.shorter - 1);
    std::ranges::nth_element(alike, place);
    return *place;
}

Nanoseconds Durations::percentile(unsigned percent) {
    // Written so that it holds for counts that a hundredfold would overflow.
    const uint64_t rank = count_ / 100 * percent + (count_ % 100 * percent + 99) / 100;
    if (isSketch_) return std::min(max_, static_cast<Nanoseconds>(sketch_->atRank(rank).middle()));
    return static_cast<Nanoseconds>(lengths_.size() < kMany ? amongFew(rank) : amongMany(rank));
}

}  // namespace sonaprobe
