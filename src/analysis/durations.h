// How long the calls of one kind took: every length, or a sketch of all.

#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
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

    // What a sketch takes where every size occurs, as a number of lengths.
    static constexpr uint64_t kMostRoom = kSteps * (64 - kStepBits);

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
        if (isSketch_) {
            sketch_->add(positive);
        } else {
            lengths_.push_back(positive);
        }
        ++count_;
        max_ = std::max(max_, length);
    }

    // Keeps counts by size instead of every length from where they are smaller.
    void becomeSketch() {
        if (!isSketch_ && lengths_.size() >= DurationSketch::kMostRoom) forgetLengths();
    }

    uint64_t count() const { return count_; }
    Nanoseconds max() const { return max_; }

    // Nearest rank: the shortest length that at least this share of all does not exceed. There is
    // at least one.
    Nanoseconds percentile(unsigned percent);

    bool isSketch() const { return isSketch_; }

  private:
    // So many are looked through by size before any are sorted.
    static constexpr size_t kMany = 4096;

    void forgetLengths();
    void bringSketchUpToDate();
    uint64_t atRank(uint64_t rank);

    StableList<uint64_t> lengths_;  // none where they are in the sketch alone
    std::unique_ptr<DurationSketch> sketch_;
    size_t sketched_ = 0;  // so many of lengths_
    bool isSketch_ = false;
    uint64_t count_ = 0;
    Nanoseconds max_ = 0;
};

}  // namespace sonaprobe
