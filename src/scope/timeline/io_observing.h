// Finds what a trace's I/O came to while its page is made.

#pragma once

#include <span>
#include <vector>

#include "analysis/dropout_causes.h"
#include "scope/timeline/worker.h"

namespace sonaprobe::scope::timeline {

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
        worker_.give([this] { answer_ = judgeIo(observer_.finish()); });
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
