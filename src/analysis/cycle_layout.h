// Whose the time of an I/O cycle was, from when it was due.

#pragma once

#include <optional>
#include <vector>

#include "analysis/holders.h"
#include "analysis/io_timing.h"

namespace sonaprobe {

// The time of one owner within a cycle.
struct OwnerShare {
    OwnerKey owner = kCycleItself;
    const SeenCall* call = nullptr;  // none for a late begin and the cycle itself
    Nanoseconds time = 0;
    Silence silence{};  // its longest stretch without records of the thread
};

// A cycle's time from when it was due.
struct CycleLayout {
    const IoCycle* cycle = nullptr;
    size_t number = 0;
    bool dueKnown = false;
    Nanoseconds due = 0;
    Nanoseconds deadline = 0;
    Nanoseconds until = 0;
    std::vector<OwnerShare> owners{};  // the one with the largest excess first
};

// A cycle of the thread, by its number, until it ended or a moment before; by the records of a
// scene.
CycleLayout layOutCycle(const TimedThread& timed, const Scene& scene, size_t number,
                        Nanoseconds until);

}  // namespace sonaprobe
