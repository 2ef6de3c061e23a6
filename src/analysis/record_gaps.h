// Where in a scene records must be missing.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "analysis/io_cycles.h"

namespace sonaprobe {

// A stretch without a record of any thread.
struct Gap {
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    uint64_t slotBefore = 0;
    uint64_t slotAfter = 0;
    size_t explains = 0;     // threads that have an end without a start after it
    bool standsOut = false;  // twice as long as any other in its neighbourhood

    Nanoseconds length() const { return end - begin; }
};

// The largest gap of all threads that overlaps a stretch of time; first of all one that explains
// most ends without starts.
std::optional<Gap> largestGap(const Scene& scene, Nanoseconds begin, Nanoseconds end);

// The largest gap that overlaps a stretch of time and has an invalid slot in it, as a tracer leaves
// where records were lost.
std::optional<Gap> markedGap(const Scene& scene, Nanoseconds begin, Nanoseconds end);

}  // namespace sonaprobe
