// Percentiles by nearest rank, of lengths or of their sketch.

#include "analysis/durations.h"

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

DurationSketch Durations::sketchOfLengths() const {
    DurationSketch sketch;
    forEachLength([&](uint64_t length) { sketch.add(length); });
    return sketch;
}

void Durations::forgetLengths() {
    sketch_ = std::make_unique<DurationSketch>(sketchOfLengths());
    short_ = {};
    long_ = {};
}

// Of many lengths it sorts those alone that have about the right size.
std::vector<Nanoseconds> Durations::percentiles(std::span<const unsigned> percents) const {
    const bool areMany = !isSketch() && count_ >= kMany;
    const DurationSketch sketch = areMany ? sketchOfLengths() : DurationSketch();
    struct Sought {
        uint64_t rank;
        DurationSketch::Size size;
        std::vector<uint64_t> alike;
    };
    std::vector<Sought> all;
    for (const unsigned percent : percents) {
        // Written so that it holds for counts that a hundredfold would overflow.
        const uint64_t rank = count_ / 100 * percent + (count_ % 100 * percent + 99) / 100;
        DurationSketch::Size size{.least = 0, .most = static_cast<uint64_t>(max_), .shorter = 0};
        if (areMany) size = sketch.atRank(rank);
        if (isSketch()) size = sketch_->atRank(rank);
        all.push_back({rank, size, {}});
    }
    // Sizes that differ have no length in common: each is kept once, with the first.
    const auto firstWith = [&](uint64_t length) {
        return std::ranges::find_if(all, [&](const auto& one) { return one.size.holds(length); });
    };
    forEachLength([&](uint64_t length) {
        const auto first = firstWith(length);
        if (first != all.end()) first->alike.push_back(length);
    });
    std::vector<Nanoseconds> told;
    for (const Sought& sought : all) {
        uint64_t length = sought.size.middle();
        if (!isSketch()) {
            std::vector<uint64_t>& alike = firstWith(sought.size.least)->alike;
            const auto place =
                alike.begin() + static_cast<std::ptrdiff_t>(sought.rank - sought.size.shorter - 1);
            std::ranges::nth_element(alike, place);
            length = *place;
        }
        told.push_back(std::min(max_, static_cast<Nanoseconds>(length)));
    }
    return told;
}

}  // namespace sonaprobe
