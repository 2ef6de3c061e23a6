// Which start record an end record closes: calls, in one pass over a trace's slots.

#pragma once

#include <cstdint>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/trace_clock.h"

namespace sonaprobe {

// Where in a trace something happened.
struct Moment {
    Nanoseconds time = 0;
    uint64_t slot = 0;
    uint32_t thread = 0;  // the clock's number
};

enum class CallEnd : uint8_t {
    finished,    // by its end record
    cutOff,      // by an end around it, a restart, a start that does not recurse, the clock
    unfinished,  // by the end of the file
};

struct Call {
    Nanoseconds start = 0;
    Nanoseconds inside = 0;  // the time of the calls directly inside, so far
    uint64_t startSlot = 0;
    uint64_t object = 0;  // 0 where the code has none
    uint32_t code = 0;
    uint32_t cpu = 0;     // where it started
    uint32_t thread = 0;  // the clock's number
    uint32_t depth = 0;   // 0 outermost
    uint32_t tag = 0;     // whatever the sink gave it
};

// How and when a call ended.
struct Closing {
    CallEnd how{};
    Nanoseconds time = 0;
    uint64_t slot =
        0;  // of the record or divisor that ended it; the number of slots where none did
    const TraceRecord* end = nullptr;  // the end record of a finished call

    Nanoseconds lengthOf(const Call& call) const { return saturated(Wide{time} - call.start); }
    Nanoseconds selfOf(const Call& call) const { return lengthOf(call) - call.inside; }
};

// Who wants to know. Calls on one thread close from the innermost outwards, and before the start
// that cuts them off opens.
class CallSink {
  public:
    virtual ~CallSink() = default;

    // The record opens a call inside `parent`, null where it is outermost; what this gives back is
    // the call's tag.
    virtual uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) = 0;
    virtual void closed(const Call& call, const Call* parent, const Closing& closing) = 0;
    virtual void point(const TraceRecord& record, const Moment& moment) = 0;
    virtual void orphanEnd(const TraceRecord& record, const Moment& moment) = 0;
};

// Memory grows with the calls that are open at once and with threads. A record takes the same time
// whatever is open.
class CallTracker {
  public:
    explicit CallTracker(CallSink& sink) : sink_(&sink) {}

    // The next slot of the file, of whatever kind; the moment of a record, null for what is none.
    const Moment* take(const TraceRecord& slot);

    // The number of the next slot, where some were left out.
    void goOnAt(uint64_t slot) { slots_ = slot; }

    // After the last slot: closes what is unfinished.
    void finish();

    const TraceClock& clock() const { return clock_; }
    uint64_t slots() const { return slots_; }
    size_t openCalls() const { return frames_.size() - unused_.size(); }

  private:
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    // An open call. Those of a thread are linked from the innermost outwards.
    struct Frame {
        Call call;
        uint32_t parent = kNone;
        uint32_t sameBefore = kNone;  // the next one outwards that the same end would match
    };
    struct Thread {
        uint32_t innermost = kNone;
        uint32_t placeInBusy = 0;
    };
    // What an end must match.
    struct Key {
        uint64_t object;
        uint32_t thread;
        uint32_t code;
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        size_t operator()(const Key& key) const {
            return keyedHash(key.object, uint64_t{key.thread} << 32 | key.code);
        }
    };

    static Key keyOf(const Call& call) { return {call.object, call.thread, call.code}; }

    void takeStart(const TraceRecord& record);
    void takeEnd(const TraceRecord& record);
    void open(const TraceRecord& record);
    void close(uint32_t thread, const Closing& closing);
    void closeDownTo(uint32_t frame, const Closing& closing);
    void closeAll(CallEnd how, Nanoseconds time);
    const Call* callOf(uint32_t frame) const {
        return frame == kNone ? nullptr : &frames_[frame].call;
    }

    CallSink* sink_;
    TraceClock clock_;
    uint64_t slots_ = 0;
    Moment moment_;
    std::vector<Frame> frames_;
    std::vector<uint32_t> unused_;  // frames
    std::vector<Thread> threads_;
    std::vector<uint32_t> busy_;  // threads with open calls
    tsl::robin_map<Key, uint32_t, Hash> innermostOf_;
};

}  // namespace sonaprobe
