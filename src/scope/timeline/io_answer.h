// What a trace's I/O came to, for its page.

#pragma once

#include <span>
#include <vector>

#include "analysis/dropout_causes.h"
#include "scope/timeline/worker.h"

namespace sonaprobe::scope::timeline {

// Observes in a thread of its own, some slots after those that are given.
class IoAnswer {
  public:
    void take(std::span<const TraceRecord> slots) {
        worker_.give([this, some = std::vector(slots.begin(), slots.end())] {
            for (const TraceRecord& slot : some) observer_.take(slot);
        });
    }

    // After the last slots.
    void finish() {
        worker_.finish();
        io = observer_.finish();
        timed = timeThreads(io);
        dropouts = judgeDropouts(io, timed);
    }

    IoTrace io;
    std::vector<TimedThread> timed;
    std::vector<Dropout> dropouts;

  private:
    static constexpr size_t kMostWaiting = 4;

    IoObserver observer_;
    Worker worker_{kMostWaiting};  // the last, as it uses the rest
};

}  // namespace sonaprobe::scope::timeline
