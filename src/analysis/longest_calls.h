// The longest calls of a trace, with the records that started and ended them.

#pragma once

#include <cstdint>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/call_tracker.h"

namespace sonaprobe {

struct LongCall {
    Call call;
    Nanoseconds endTime = 0;
    uint64_t endSlot = 0;
    TraceRecord start{};
    TraceRecord end{};
    Nanoseconds shownStart = 0;  // the time that the user sees

    Nanoseconds length() const { return saturatedDifference(endTime, call.start); }
};

// Memory grows with the calls that are open at once and with the number that is kept.
class LongestCalls {
  public:
    // So many are kept, not 0.
    explicit LongestCalls(size_t kept) : kept_(kept) {}

    // For CallSink, all calls.
    void open(const TraceRecord& record, const Call& call, Nanoseconds shownStart);
    void close(const Call& call, const Closing& closing, bool counts);

    // The longest first; of equal ones, the one that started first.
    std::vector<LongCall> sorted() const;

  private:
    struct Start {
        TraceRecord record;
        Nanoseconds shown;
    };
    struct Hash {
        size_t operator()(uint64_t slot) const { return keyedHash(slot, 2); }
    };

    size_t kept_;
    tsl::robin_map<uint64_t, Start, Hash> startBySlot_;  // of open calls
    std::vector<LongCall> heap_;                         // the shortest on top
};

}  // namespace sonaprobe
