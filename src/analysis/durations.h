// How long the calls of one kind took: every length, or a sketch of all.

#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "analysis/stable_list.h"
#include "analysis/trace_clock.h"

namespace sonaprobe {

// Counts by size, with kSteps sizes from one power of two to the next. Lengths up to kSteps are
// kept as they are.
class DurationSketch {
  public:
    static constexpr unsigned kStepBits = 8;
    static constexpr uint64_t kSteps = 1ULL << kStepBits;

    // A length told by a sketch is off by no more than this share of itself.
    static constexpr double kError = 1.0 / (2.0 * kSteps);

    static constexpr uint64_t kMostSizes = kSteps * (64 - kStepBits);

    void add(uint64_t length) {
        const size_t place = placeOf(length);
        if (place >= counts_.size()) makeRoomAt(place);
        ++counts_[place];
    }

    // Lengths that are counted together.
    struct Size {
        uint64_t least;
        uint64_t most;
        uint64_t shorter;  // so many others are

        uint64_t middle() const { return least + (most - least) / 2; }
        bool holds(uint64_t length) const { return length - least <= most - least; }
    };

    // Those with the length of the given rank, 1 the shortest, among them.
    Size atRank(uint64_t rank) const;

  private:
    // Of the low bits that are left out there are none for lengths below 2 * kSteps, one for those
    // below 4 * kSteps and so on: places follow each other as lengths do.
    static size_t placeOf(uint64_t length) {
        const auto leftOut = static_cast<unsigned>(std::bit_width(length | kSteps)) - 1 - kStepBits;
        return (leftOut << kStepBits) + (length >> leftOut);
    }
    void makeRoomAt(size_t place);

    std::vector<uint64_t> counts_;  // up to the longest length
};

class Durations {
  public:
    void add(Nanoseconds length) {
        const auto positive = static_cast<uint64_t>(length);
        if (sketch_ != nullptr) {
            sketch_->add(positive);
        } else if (positive <= kMostShort) {
            short_.push_back(static_cast<uint32_t>(positive));
        } else {
            long_.push_back(positive);
        }
        ++count_;
        max_ = std::max(max_, length);
    }

    // Keeps counts by size instead of every length, unless there are more sizes than lengths.
    void becomeSketch() {
        if (!isSketch() && count_ >= DurationSketch::kMostSizes) forgetLengths();
    }

    uint64_t count() const { return count_; }
    Nanoseconds max() const { return max_; }

    // By nearest rank: the shortest length that at least this share of all does not exceed, for
    // each of the percents. There is at least one length.
    std::vector<Nanoseconds> percentiles(std::span<const unsigned> percents) const;
    Nanoseconds percentile(unsigned percent) const { return percentiles({&percent, 1}).front(); }

    bool isSketch() const { return sketch_ != nullptr; }

  private:
    static constexpr uint64_t kMostShort = std::numeric_limits<uint32_t>::max();

    // So many are looked through by size before any are sorted.
    static constexpr uint64_t kMany = 4096;

    template <class Visit>
    void forEachLength(const Visit& visit) const {
        short_.forEach(visit);
        long_.forEach(visit);
    }
    DurationSketch sketchOfLengths() const;
    void forgetLengths();

    // Lengths in 4 bytes, and the few that need 8; none where there is a sketch.
    StableList<uint32_t> short_;
    StableList<uint64_t> long_;
    std::unique_ptr<DurationSketch> sketch_;
    uint64_t count_ = 0;
    Nanoseconds max_ = 0;
};

}  // namespace sonaprobe
