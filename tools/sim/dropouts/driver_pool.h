// The driver threads of a dropouts trace: who is free when, on which processor.

#pragma once

#include <map>
#include <optional>
#include <span>
#include <vector>

#include "sim/dropouts/cause.h"
#include "sim/dropouts/score.h"
#include "sim/stories/driver_acts.h"

namespace sonaprobe::sim {

class DriverPool {
  public:
    DriverPool(Score& score, const Level& level);

    // Plays an act on a free thread, from `begin` on, on a processor that no I/O thread uses.
    // Nothing where all threads are busy within `longest`.
    std::optional<Performance> play(const DriverAct& act, Ticks begin, Ticks hold, Ticks longest);

    // Plays interrupt work, one call after the other, on one thread and one processor from `begin`
    // to about `until`. Nothing where all threads are busy.
    std::optional<Performance> interrupt(uint32_t cpu, Ticks begin, Ticks until);

    // Fills the threads' idle time until `end` with work that holds nobody up.
    void fill(Ticks end);

  private:
    static constexpr size_t kNone = SIZE_MAX;

    // A thread that is free all the time from begin to end, or kNone.
    size_t findThread(Ticks begin, Ticks end);
    const DriverAct& pick(std::span<const DriverAct> acts);

    Score& score_;
    const Level& level_;
    std::vector<std::map<Ticks, Ticks>> busy_;  // by thread, begins and ends
};

}  // namespace sonaprobe::sim
