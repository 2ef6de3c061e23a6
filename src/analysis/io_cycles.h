// What a trace tells of the audio server's I/O: cycles, their clients and stamps, dropouts, and the
// records around each dropout. Gathered in one pass.

#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/call_tracker.h"
#include "analysis/durations.h"
#include "analysis/event_traits.h"
#include "analysis/sliding_window.h"
#include "analysis/stable_list.h"

namespace sonaprobe {

// Whose the time of a cycle is: the innermost of what is going on.
using OwnerKey = uint64_t;
constexpr OwnerKey kLateBegin = 1;
constexpr OwnerKey kCycleItself = 2;
constexpr OwnerKey clientKey(uint32_t number) { return uint64_t{1} << 32 | number; }
constexpr OwnerKey callKey(uint32_t code) { return code; }

// No time in here is farther from 0, so that sums of a few cannot overflow, whatever a file says.
constexpr Nanoseconds kFarthest = std::numeric_limits<Nanoseconds>::max() / 16;
constexpr Nanoseconds bounded(Nanoseconds time) { return std::clamp(time, -kFarthest, kFarthest); }

// A sample and the time that the audio server gave it, on the trace's time scale.
struct SampleTime {
    uint64_t sample = 0;
    Nanoseconds host = 0;
    bool operator==(const SampleTime&) const = default;
};

// Where a thread was told the time on whose line a cycle lies.
enum class ToldBy : uint8_t { nobody, cycleBefore, orphanEnd };

struct IoCycle {
    uint64_t beginSlot = 0;
    uint64_t endSlot = 0;
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    uint64_t sample = 0;
    uint64_t frames = 0;
    SampleTime told{};  // by its own end, where it tells

    // What io_timing.h finds out.
    Nanoseconds budget = 0;
    Nanoseconds due = 0;  // where it is known

    bool tells = false;
    bool hasDue = false;
    bool finished = false;
    bool broken = false;  // a call inside was cut off: a record is missing
    bool overloaded = false;
    ToldBy toldBy = ToldBy::nobody;

    bool isHealthy() const { return isWhole() && end <= due + budget; }
    bool isNearMiss() const { return isWhole() && end > due + budget; }

  private:
    bool isWhole() const { return finished && !broken && hasDue && !overloaded; }
};

// How much of its time a thread's cycles were an owner's, as often as it had some.
struct OwnerTimes {
    OwnerKey owner = 0;
    StableList<Nanoseconds> times{};
    StableList<uint32_t> cycles{};
};

// A ZeroTimeStamp.
struct Stamp {
    SampleTime at;
    Nanoseconds time = 0;  // of its record
    uint64_t slot = 0;
    uint32_t thread = 0;
    uint32_t cpu = 0;
    double perFrame = 0;  // nanoseconds, as the stamp says; 0 where it does not
};

// A record as the search for causes needs it.
struct SeenRecord {
    Nanoseconds time = 0;
    uint64_t slot = 0;
    uint32_t debugid = 0;
    uint32_t thread = 0;
    uint32_t cpu = 0;
    bool orphan = false;        // an end whose start is missing
    bool afterInvalid = false;  // the slot before it is an invalid one
};

// A call that touches a scene, with its end wherever that is.
struct SeenCall {
    Nanoseconds start;
    Nanoseconds end;
    uint64_t startSlot;
    uint64_t endSlot;
    uint32_t code;
    uint32_t cpu;
    uint32_t thread;
    uint32_t depth;
    bool finished;
};

// The records around a dropout, in the order of time, and the calls that touch them.
struct Scene {
    std::vector<SeenRecord> records;
    std::vector<SeenCall> calls;
};

constexpr size_t kNoCycle = SIZE_MAX;

struct Overload {
    Nanoseconds time = 0;
    uint64_t slot = 0;
    uint32_t thread = 0;
    size_t cycle = kNoCycle;  // of its thread
    // What it tells; nothing where its words are 0.
    std::optional<uint64_t> targetSample{};
    std::optional<Nanoseconds> targetHost{};
    std::optional<Nanoseconds> overrun{};  // current host time less target
    Scene scene{};
};

struct IoThread {
    uint32_t thread = 0;  // the clock's number
    uint64_t id = 0;
    uint64_t rate = 0;  // as the IOThread said; 0 where it did not
    StableList<IoCycle> cycles{};
    StableList<Nanoseconds> clockShifts{};  // of cycles: HostTime less the record's time, if not 0
    std::vector<OwnerTimes> owners{};

    struct Told {
        size_t cycle = 0;
        SampleTime told{};
    };
    StableList<Told> toldByOrphans{};  // before a cycle, in their order

    // What the thread was told before a cycle began, as a rule by the end of the cycle before.
    std::optional<SampleTime> toldBefore(size_t cycle) const {
        switch (cycles[cycle].toldBy) {
            case ToldBy::nobody: break;
            case ToldBy::cycleBefore: return cycles[cycle - 1].told;
            case ToldBy::orphanEnd:
                return toldByOrphans[toldByOrphans.countUpTo(cycle, &Told::cycle) - 1].told;
        }
        return {};
    }
};

struct IoTrace {
    std::vector<IoThread> threads;  // those with cycles
    std::vector<Stamp> stamps;
    std::vector<Overload> overloads;
    std::vector<uint64_t> threadIds;  // by the clock's number
    Durations gaps;                   // between one record and the next, of whatever thread
    uint64_t records = 0;
    uint64_t serverRecords = 0;
    uint64_t orphanEnds = 0;      // of driver calls
    uint64_t unseenDropouts = 0;  // whose scenes found no room
    uint64_t restarts = 0;
    bool assumedDivisor = false;
};

// Takes the slots of a file one by one. Memory grows with cycles, the calls in them, and
// dropouts.
class IoObserver {
  public:
    IoObserver() : tracker_(*this) {}
    void take(const TraceRecord& slot);

    // After the last slot.
    IoTrace finish();

  private:
    friend CallTrackerOf<IoObserver>;

    // What is known of a thread so far.
    struct Server {
        size_t io = SIZE_MAX;     // in trace_.threads
        IoCycle* open = nullptr;  // the last of its cycles, if that is open
        uint32_t clients = 0;     // of the open cycle, so far
        std::optional<SampleTime> told;
        uint64_t scale = 0;      // see scale_
        Nanoseconds period = 0;  // between the two latest told times
        uint64_t rate = 0;
    };

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent);
    void closed(const Call& call, const Call* parent, const Closing& closing);
    void point(const TraceRecord& record, const Moment& moment);
    void orphanEnd(const TraceRecord& record, const Moment& moment);

    Server& serverOf(uint32_t thread);
    IoCycle* openCycle(uint32_t thread) {
        return thread < servers_.size() ? servers_[thread].open : nullptr;
    }
    void addTime(const Server& server, OwnerKey owner, Nanoseconds time);
    Nanoseconds hostTime(uint64_t word, uint64_t timestamp, Nanoseconds time) const;
    void beginCycle(const TraceRecord& record, const Call& call);
    void endCycle(const TraceRecord& end, const Call& call, const Closing& closing);
    void tell(Server& server, const TraceRecord& end, Nanoseconds time);
    void takeOverload(const TraceRecord& record, const Moment& moment);
    void forget();
    void tellScenes(const SeenCall& call);
    void completeScenes(bool all);
    std::optional<Scene> sceneFrom(size_t overload, Nanoseconds from, Nanoseconds to);

    CallTrackerOf<IoObserver> tracker_;
    IoTrace trace_;
    std::vector<Server> servers_;  // by thread
    struct OwnerOfThread {
        OwnerKey owner;
        size_t io;
        bool operator==(const OwnerOfThread&) const = default;
    };
    struct Hash {
        size_t operator()(const OwnerOfThread& of) const { return keyedHash(of.owner, of.io); }
    };
    tsl::robin_map<OwnerOfThread, size_t, Hash> ownerPlaces_;  // in the owners of its thread
    SlidingWindow<SeenRecord> recent_;
    SlidingWindow<SeenCall> recentCalls_;  // in the order of their ends
    // Overloads in whose scenes a call was open, by its first slot: they are told of its end.
    std::map<uint64_t, std::vector<size_t>> awaited_;
    uint64_t lastAwaited_ = 0;  // no call that began later is awaited
    struct Pending {
        size_t overload;
        Nanoseconds from;
        Nanoseconds to;
    };
    std::deque<Pending> pending_;
    size_t searched_ = 0;  // records and calls, for all scenes
    Nanoseconds latest_ = 0;
    uint64_t restarts_ = 0;
    uint64_t divisor_ = 0;
    uint64_t scale_ = 0;         // counts time scales: what was told on another one is void
    bool orphan_ = false;        // the record being taken is an orphan end
    bool afterInvalid_ = false;  // since the last record there was an invalid slot
};

}  // namespace sonaprobe
