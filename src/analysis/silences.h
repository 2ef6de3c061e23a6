// The longest times without any record: where cycles are missing, there is one.

#pragma once

#include <cstdint>
#include <deque>

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
        if (time > latest_) {
            const Nanoseconds length = saturated(Wide{time} - latest_);
            if (length >= kShortest) keep({slot_, slot, length});
            latest_ = time;
        }
        slot_ = slot;
    }

    // The longest one that begins at the slot or later, null where there is none.
    const Silence* longestSince(uint64_t slot) const;

  private:
    static constexpr size_t kMostKept = 4096;

    // No cycle has room in less: 4 frames at 192 kHz.
    static constexpr Nanoseconds kShortest = 20'000;

    void keep(const Silence& silence);

    std::deque<Silence> falling_;  // none is followed by one as long
    uint64_t slot_ = 0;
    Nanoseconds latest_ = 0;
};

}  // namespace sonaprobe
