// Reads a trace once more, for its I/O alone.

#include "scope/timeline/io_observing.h"

#include "scope/input.h"

namespace sonaprobe::scope::timeline {

void IoObserving::observe(const TraceOptions& trace) {
    IoObserver observer;
    Input input(trace);
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        if (stopped_) return;
        for (const TraceRecord& slot : slots) observer.take(slot);
    }
    answer_ = judgeIo(observer.finish());
}

}  // namespace sonaprobe::scope::timeline
