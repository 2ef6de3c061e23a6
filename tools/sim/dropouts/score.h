// What all threads of a dropouts trace have traced, thread by thread, until it is put into one
// order.

#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "record/trace_record.h"
#include "sim/random.h"
#include "sim/stage.h"
#include "sim/story.h"

namespace sonaprobe::sim {

// I/O threads have the first of them, each its own.
constexpr uint32_t kProcessors = 8;
constexpr uint32_t kCpusOfIoThread = 2;

// The trace's beginning on the trace clock: a whole hour of the machine's time.
constexpr Ticks kTraceOrigin = 3600 * kTicksPerSecond;

// A record of the score, whose slot in the file is settled last.
using Ticket = size_t;
constexpr Ticket kNoTicket = SIZE_MAX;

// An act as it was played.
struct Performance {
    Ticket first = 0;
    Ticket past = 0;
    Ticks begin = 0;
    Ticks end = 0;
};

// A stretch of time whose records are lost, from `begin` until just before `end`.
struct LostStretch {
    Ticks begin = 0;
    Ticks end = 0;
};

class Score {
  public:
    explicit Score(uint64_t seed);

    Random& random() { return story().random; }

    // From least to most.
    Ticks chance(Ticks least, Ticks most) { return drawBetween(random(), least, most); }
    bool oneIn(uint64_t n) { return drawBetween(random(), 1, n) == 1; }

    Ticket put(Ticks time, uint64_t thread, uint32_t cpu, uint32_t debugid, uint64_t a1 = 0,
               uint64_t a2 = 0, uint64_t a3 = 0, uint64_t a4 = 0);

    // Plays an act on one thread and one processor; its slow step takes `hold`.
    Performance play(Table table, uint64_t thread, uint32_t cpu, Ticks begin, Ticks hold);
    size_t size() const { return records_.size(); }

    // The first record with a debug id, or kNoTicket.
    Ticket find(const Performance& within, uint32_t debugid) const;
    const TraceRecord& at(Ticket ticket) const { return records_[ticket]; }

    // Processors that a thread needs, or whose silence is part of the story.
    void reserve(uint32_t cpu, Ticks begin, Ticks end) { reserved_[cpu][begin] = end; }
    bool isFree(uint32_t cpu, Ticks begin, Ticks end) const;

    void lose(LostStretch stretch) { lost_.push_back(stretch); }

    // How the processors' buffers are gathered: records of a thread may come up to `most` late, as
    // often as one in `rarity` (0: never).
    void disorder(uint64_t rarity, Ticks most);

    // The tickets in the order of the file, without what is lost.
    std::vector<Ticket> inOrder() const;

  private:
    StoryState& story() { return stage_.stories.front(); }

    Stage stage_;
    std::vector<TraceRecord> records_;
    std::map<uint32_t, std::map<Ticks, Ticks>> reserved_;
    std::vector<LostStretch> lost_;
    std::vector<Ticks> arrivals_;  // by ticket; empty: at their times
};

}  // namespace sonaprobe::sim
