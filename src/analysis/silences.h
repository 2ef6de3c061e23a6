// The longest times without any record: where cycles are missing, there is one.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "analysis/trace_clock.h"

namespace sonaprobe {

// A time without records, between two that follow each other in the file.
struct Silence {
    uint64_t after;   // slot of the record before it
    uint64_t before;  // slot of the record after it
    Nanoseconds length;
};

class Silences {
  public:
    // The next record of the file; one that was taken already changes nothing.
    void take(uint64_t slot, Nanoseconds time) {
        if (slot == slot_) return;
        const Nanoseconds length = time > latest_ ? saturatedDifference(time, latest_) : 0;
        latest_ = std::max(latest_, time);
        newest_[newestSize_] = {slot_, slot, length};
        newestSize_ += length >= kShortest ? 1 : 0;
        if (newestSize_ == kNewest) settle();
        slot_ = slot;
    }

    // The longest one that begins at the slot or later, null where there is none. Holds until the
    // next record.
    const Silence* longestSince(uint64_t slot);

  private:
    // When so many are kept, the older half is forgotten.
    static constexpr size_t kMostKept = 8192;

    // No cycle has room in less: 4 frames at 192 kHz.
    static constexpr Nanoseconds kShortest = 20'000;

    // Sorted out together: most of them are followed by a longer one soon.
    static constexpr size_t kNewest = 64;

    void settle();

    std::vector<Silence> falling_;  // none is followed by one as long
    std::array<Silence, kNewest> newest_{};
    size_t newestSize_ = 0;
    uint64_t slot_ = 0;
    Nanoseconds latest_ = 0;
};

}  // namespace sonaprobe
