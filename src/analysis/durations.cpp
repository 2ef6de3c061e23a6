// Percentiles by nearest rank, of lengths or of their sketch.

#include "analysis/durations.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace sonaprobe {

// Row 0 holds lengths below kSteps; row n > 0 those whose highest bit is kStepBits + n - 1, by the
// kStepBits bits after it.
void DurationSketch::add(uint64_t length) {
    const unsigned width = static_cast<unsigned>(std::bit_width(length));
    const unsigned row = width <= kStepBits ? 0 : width - kStepBits;
    const uint64_t step = row == 0 ? length : (length >> (row - 1)) - kSteps;
    if (counts_[row] == nullptr) {
        counts_[row] = std::make_unique<std::array<uint64_t, kSteps>>();
    }
    ++(*counts_[row])[step];
}

uint64_t DurationSketch::atRank(uint64_t rank) const {
    uint64_t seen = 0;
    uint64_t middle = 0;
    for (size_t row = 0; row < counts_.size(); ++row) {
        if (counts_[row] == nullptr) continue;
        for (uint64_t step = 0; step < kSteps; ++step) {
            const uint64_t count = (*counts_[row])[step];
            if (count == 0) continue;
            seen += count;
            const unsigned shift = row == 0 ? 0 : static_cast<unsigned>(row) - 1;
            const uint64_t least = row == 0 ? step : (step + kSteps) << shift;
            middle = least + ((1ULL << shift) - 1) / 2;
            if (seen >= rank) return middle;
        }
    }
    return middle;
}

void Durations::add(Nanoseconds length) {
    const auto positive = static_cast<uint64_t>(length);
    if (sketch_ != nullptr) {
        sketch_->add(positive);
    } else {
        lengths_.push_back(positive);
        shorter_ = 0;
    }
    ++count_;
    max_ = std::max(max_, length);
}

void Durations::becomeSketch() {
    if (isSketch() || lengths_.size() < DurationSketch::kMostRoom) return;
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
