// Percentiles by nearest rank, of lengths or of their sketch.

#include "analysis/durations.h"

#include <algorithm>

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

void Durations::bringSketchUpToDate() {
    if (sketch_ == nullptr) sketch_ = std::make_unique<DurationSketch>();
    for (; sketched_ < lengths_.size(); ++sketched_) sketch_->add(lengths_[sketched_]);
}

void Durations::forgetLengths() {
    bringSketchUpToDate();
    lengths_ = {};
    isSketch_ = true;
}

// Sorts lengths of about the same size, of few all.
uint64_t Durations::atRank(uint64_t rank) {
    DurationSketch::Size size{.least = 0, .most = static_cast<uint64_t>(max_), .shorter = 0};
    if (lengths_.size() >= kMany) {
        bringSketchUpToDate();
        size = sketch_->atRank(rank);
    }
    std::vector<uint64_t> alike;
    lengths_.forEach([&](uint64_t length) {
        if (size.holds(length)) alike.push_back(length);
    });
    const auto place = alike.begin() + static_cast<std::ptrdiff_t>(rank - size.shorter - 1);
    std::ranges::nth_element(alike, place);
    return *place;
}

Nanoseconds Durations::percentile(unsigned percent) {
    // Written so that it holds for counts that a hundredfold would overflow.
    const uint64_t rank = count_ / 100 * percent + (count_ % 100 * percent + 99) / 100;
    if (isSketch_) return std::min(max_, static_cast<Nanoseconds>(sketch_->atRank(rank).middle()));
    return static_cast<Nanoseconds>(atRank(rank));
}

}  // namespace sonaprobe
