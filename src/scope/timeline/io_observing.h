// Finds what a trace's I/O came to while its page is made.

#pragma once

#include <atomic>

#include "analysis/dropout_causes.h"
#include "scope/timeline/worker.h"

namespace sonaprobe::scope {
struct TraceOptions;
}

namespace sonaprobe::scope::timeline {

// Reads and observes in a thread of its own, from the first moment on: it takes about as long as
// the other readings together, and waits for none of them.
class IoObserving {
  public:
    // `trace` outlives this.
    explicit IoObserving(const TraceOptions& trace) {
        worker_.give([this, &trace] { observe(trace); });
    }
    // The reading ends with its next slots; what is made of it is waited for.
    ~IoObserving() { stopped_ = true; }

    // Waits for it. Throws a Failure where the trace could not be read.
    const IoAnswer& answer() {
        worker_.finish();
        return answer_;
    }

  private:
    void observe(const TraceOptions& trace);

    std::atomic<bool> stopped_ = false;
    IoAnswer answer_;
    Worker worker_{1};  // the last, as it uses the rest
};

}  // namespace sonaprobe::scope::timeline
