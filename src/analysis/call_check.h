// What calls tell about a whole trace: how many there are, and where records must be missing.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "analysis/call_tracker.h"
#include "analysis/silences.h"

namespace sonaprobe {

struct CallCounts {
    uint64_t opened = 0;
    uint64_t finished = 0;
    uint64_t cutOff = 0;
    uint64_t unfinished = 0;
    uint64_t orphanEnds = 0;
};

// What shows that records are missing.
enum class MissingSign : uint8_t {
    cutOffByEnd,    // a call whose end did not come before that of a call around it
    cutOffByStart,  // one of the audio server's that began again before its end
    orphanEnd,      // an end without a start, while another call is open
    orphanCycle,    // the same of a server's cycle or client, after a cycle that was whole
    sampleTime,     // of cycles: whole buffers are left out
    clock,          // a cycle began much later, at the sample time that the one before told
};

// Records are missing between two slots.
struct MissingStretch {
    uint64_t after;   // slot of the last record known to be before
    uint64_t before;  // slot of the first known to be after
    MissingSign sign;
    uint32_t code;   // the event that showed it first
    uint64_t signs;  // how many
};

class CallCheck {
  public:
    CallCheck() : tracker_(*this) {}
    CallCheck(const CallCheck&) = delete;
    CallCheck& operator=(const CallCheck&) = delete;

    // The file's slots, by ascending numbers; what lies between them is not taken.
    void take(const TraceRecord& slot, uint64_t number);
    void finish() { tracker_.finish(); }

    const CallCounts& counts() const { return counts_; }
    const TraceClock& clock() const { return tracker_.clock(); }

    // In the order of the file; at most kMostStretches, then none are added.
    const std::vector<MissingStretch>& missing() const { return missing_; }
    static constexpr size_t kMostStretches = 1000;

  private:
    // A cycle of the audio server.
    struct Cycle {
        uint64_t slot = 0;        // of its end
        uint64_t sample = 0;      // time of its start
        uint64_t buffer = 0;      // samples
        uint64_t nextSample = 0;  // time of the next one's start, as its end told
        Nanoseconds start = 0;
        Nanoseconds end = 0;
        Nanoseconds period = 0;  // from the start of the cycle before
        uint64_t regular = 0;    // cycles before it in a row that began where they should
        uint64_t epoch = 0;
        bool overloaded = false;  // since its start
    };
    struct Thread {
        std::vector<uint64_t> provable;  // slots of open calls that trace both ends
        Cycle open;                      // that began last
        std::optional<Cycle> ended;      // that ended last
    };

    friend CallTrackerOf<CallCheck>;
    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent);
    void closed(const Call& call, const Call* parent, const Closing& closing);
    void point(const TraceRecord& record, const Moment& moment);
    void orphanEnd(const TraceRecord& record, const Moment& moment);

    uint64_t epochNow() const;
    Thread& threadAt(uint32_t number) {
        if (number >= threads_.size()) threads_.resize(number + 1);
        return threads_[number];
    }
    const Cycle* cycleBefore(const Thread& thread) const;
    void beginCycle(const TraceRecord& start, const Call& call);
    void endCycle(const Call& call, const Closing& closing);
    void addSkip(uint64_t samples, const Cycle& cycle, uint64_t after, uint64_t before);
    void add(uint64_t after, uint64_t before, MissingSign sign, uint32_t code);

    CallTrackerOf<CallCheck> tracker_;
    const TraceRecord* record_ = nullptr;  // that is being taken
    uint64_t epoch_ = 0;                   // counts the clock's steps back and new divisors
    CallCounts counts_;
    std::vector<Thread> threads_;
    Silences silences_;
    std::vector<MissingStretch> missing_;
};

}  // namespace sonaprobe
