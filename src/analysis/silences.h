// The longest times without any record: where records are missing, there is one.

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
    void take(uint64_t slot, Nanoseconds time);

    // The longest one that begins at the slot or later, null where there is none.
    const Silence* longestSince(uint64_t slot) const;

  private:
    static constexpr size_t kMostKept = 4096;

    std::deque<Silence> falling_;  // none is followed by one as long
    uint64_t slot_ = 0;
    Nanoseconds latest_ = 0;
};

}  // namespace sonaprobe
