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
        for (; slots.size() > kSlots; slots = slots.subspan(kSlots)) give(slots.first(kSlots));
        give(slots);
    }

    // After the last slots; the answer is found meanwhile.
    void finish() {
        finished_ = true;
        worker_.give([this] { answer_ = judgeIo(observer_.finish()); });
    }
    bool isFinished() const { return finished_; }

    // After finish(): waits for it.
    const IoAnswer& answer() {
        worker_.finish();
        return answer_;
    }

  private:
    static constexpr size_t kMostWaiting = 16;
    // At once: memory of that size is kept by the program for the next ones.
    static constexpr size_t kSlots = 1024;

    void give(std::span<const TraceRecord> slots) {
        worker_.give([this, some = std::vector(slots.begin(), slots.end())] {
            for (const TraceRecord& slot : some) observer_.take(slot);
        });
    }

    bool finished_ = false;
    IoObserver observer_;
    IoAnswer answer_;
    Worker worker_{kMostWaiting};  // the last, as it uses the rest
};

}  // namespace sonaprobe::scope::timeline
