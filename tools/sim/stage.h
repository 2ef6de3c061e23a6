// Plays the stories of a scenario, all their threads side by side, and hands out what they trace
// in the order of time. The same seed gives the same records.

#pragma once

#include <array>
#include <vector>

#include "record/trace_record.h"
#include "sim/random.h"
#include "sim/scenarios.h"
#include "sim/story.h"

namespace sonaprobe::sim {

// How time in the stories becomes time stamps.
struct StageClock {
    Ticks origin = 0;  // time stamp of the stories' beginning
    double pace = 1;   // stamp ticks for a tick in the stories: below 1 they run faster
};

constexpr Ticks stampOf(const StageClock& clock, Ticks time) {
    if (clock.pace == 1) return clock.origin + time;
    return clock.origin + static_cast<Ticks>(static_cast<double>(time) * clock.pace);
}

// A table on its way.
struct Scene {
    Table table;
    size_t next = 0;         // index of its next step; kAtBeat: it may begin once more
    Ticks period = 0;        // 0: no beat
    Ticks beat = 0;          // time of the present or next one
    uint64_t beatsLeft = 0;  // of every()
    int variable = -1;       // of everyWhile()
};
constexpr size_t kAtBeat = SIZE_MAX;
constexpr size_t kMostScenes = 16;

// A thread of a story while it is at work.
struct Actor {
    Thread thread{};
    uint32_t cpu = 0;
    Ticks time = 0;  // of its next step
    std::array<Scene, kMostScenes> scenes{};
    size_t depth = 0;  // scenes that are open; 0: nothing to do
};

struct StoryState {
    const Story* story = nullptr;
    Random random;
    std::array<uint64_t, kVariables> variables{};
    std::vector<Actor> actors{};
};

struct Stage {
    StageClock clock;
    uint64_t objectSlide = 0;  // what tells the objects and threads of one stage from another's
    uint64_t threadSlide = 0;
    Ticks time = 0;  // of the latest step of all
    std::vector<StoryState> stories;
};

// Stages may play side by side: each has objects and threads of its own, by its number.
Stage makeStage(const Scenario& scenario, uint64_t seed, uint32_t number);

// All stories of the scenario begin, at the time that the last ones had come to.
void beginRound(Stage& stage);

// Lets an actor begin with a table, which it plays alone by nextRecordOf().
void beginTable(Actor& actor, Table table, Ticks time);

// The next record of one actor, whatever the others do; false when it has nothing left to do.
bool nextRecordOf(Stage& stage, StoryState& story, Actor& actor, TraceRecord& record);

// The next record, its reserved word 0; false when all stories have ended.
bool nextRecord(Stage& stage, TraceRecord& record);

}  // namespace sonaprobe::sim
