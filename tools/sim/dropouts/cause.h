// What a dropouts trace is asked to hold: causes, and how hard they are to find.

#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "sim/story.h"

namespace sonaprobe::sim {

enum class Cause : uint8_t {
    client,
    driverCall,
    blockedBy,
    preempted,
    lateWake,
    clock,
    engineChange,
    lostRecords,
    unknown,
};

// By cause.
constexpr std::array<std::string_view, 9> kCauseNames = {
    "client", "driver-call",   "blocked-by",   "preempted", "late-wake",
    "clock",  "engine-change", "lost-records", "unknown"};

constexpr std::string_view nameOf(Cause cause) {
    return kCauseNames.at(static_cast<size_t>(cause));
}

// A chance of one in n; never where n is 0.
struct Level {
    std::string_view name;
    uint32_t ioThreads;
    uint32_t driverThreads;
    uint32_t leastOver;    // hundredths of a budget that an overloaded cycle is late by
    Ticks longestDecoy;    // of a gate that is held while nobody waits for it
    uint32_t decoys;       // how often work of the driver threads is such a gate
    uint32_t blankWords;   // how often an OVERLOAD tells nothing
    uint32_t moved;        // how often a thread goes on on another processor
    uint32_t carried;      // how often a late cycle makes the next one late
    uint32_t early;        // how often a holder gives back the gate before its outermost call ends
    uint32_t otherClock;   // how often the host clock is not the trace clock
    uint32_t interrupted;  // how often an interrupt is served while the thread stands still
    uint32_t tangled;      // how often there are two holders, a chain of them, or two victims
    uint32_t disordered;   // how often records come late into the file
};

constexpr std::array<Level, 3> kLevels = {{
    {.name = "easy",
     .ioThreads = 1,
     .driverThreads = 3,
     .leastOver = 15,
     .longestDecoy = ms(3),
     .decoys = 9,
     .blankWords = 0,
     .moved = 0,
     .carried = 0,
     .early = 0,
     .otherClock = 0,
     .interrupted = 0,
     .tangled = 0,
     .disordered = 0},
    {.name = "medium",
     .ioThreads = 2,
     .driverThreads = 6,
     .leastOver = 6,
     .longestDecoy = ms(9),
     .decoys = 6,
     .blankWords = 8,
     .moved = 8,
     .carried = 8,
     .early = 4,
     .otherClock = 3,
     .interrupted = 8,
     .tangled = 0,
     .disordered = 120},
    {.name = "hard",
     .ioThreads = 3,
     .driverThreads = 9,
     .leastOver = 2,
     .longestDecoy = ms(16),
     .decoys = 5,
     .blankWords = 4,
     .moved = 5,
     .carried = 5,
     .early = 3,
     .otherClock = 2,
     .interrupted = 4,
     .tangled = 3,
     .disordered = 40},
}};

}  // namespace sonaprobe::sim
