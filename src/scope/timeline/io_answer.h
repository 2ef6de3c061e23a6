// What a trace's I/O came to, for its page.

#pragma once

#include <span>
#include <vector>

#include "analysis/dropout_causes.h"
#include "scope/timeline/worker.h"

namespace sonaprobe::scope::timeline {

struct IoAnswer {
    IoTrace io{};
    std::vector<TimedThread> timed{};
    std::vector<Dropout> dropouts{};
};

// Observes in a thread of its own, some slots after those that are given.
class IoObserving {
  public:
    void take(std::span<const TraceRecord> slots) {
        worker_.give([this, some = std::vector(slots.begin(), slots.end())] {
            for (const TraceRecord& slot : some) observer_.take(slot);
        });
    }

    // After the last slots; the answer is found meanwhile.
    void finish() {
        worker_.give([this] {
            answer_.io = observer_.finish();
            answer_.timed = timeThreads(answer_.io);
            answer_.dropouts = judgeDropouts(answer_.io, answer_.timed);
        });
    }

    // After finish(): waits for it.
    const IoAnswer& answer() {
        worker_.finish();
        return answer_;
    }

  private:
    static constexpr size_t kMostWaiting = 4;

    IoObserver observer_;
    IoAnswer answer_;
    Worker worker_{kMostWaiting};  // the last, as it uses the rest
};

}  // namespace sonaprobe::scope::timeline
