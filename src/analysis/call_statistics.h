// Statistics of calls, in groups of what they have in common.

#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/call_tracker.h"
#include "analysis/class_names.h"
#include "analysis/durations.h"
#include "analysis/event_traits.h"
#include "analysis/recently_found.h"

namespace sonaprobe {

enum class GroupBy : uint8_t { event, driver, recordClass, thread, cpu, object, threadAndEvent };

// What the calls of a group have in common; 0 what they need not. Of a driver, `code` is the first
// of its codes that the trace has; of a class, the class.
struct GroupKey {
    uint64_t object = 0;
    uint32_t code = 0;
    uint32_t thread = 0;  // the clock's number
    uint32_t cpu = 0;
    bool hasObject = false;
};

struct CallGroup {
    GroupKey key;
    uint64_t calls = 0;  // all starts that opened one
    uint64_t cutOff = 0;
    uint64_t unfinished = 0;
    uint64_t points = 0;
    uint64_t orphanEnds = 0;
    uint64_t failures = 0;  // records that tell of one

    // Of finished calls.
    Durations durations;
    Wide total = 0;  // unlike the others never saturated, for the sake of the mean
    Nanoseconds self = 0;
    Nanoseconds outermost = 0;  // the total of those not inside a call of the same group

    Nanoseconds cutOffSelf = 0;
    Nanoseconds unfinishedSelf = 0;
    // By thread: time in which a call was open, however it ended.
    std::optional<Nanoseconds> busy;

    uint64_t finished() const { return durations.count(); }

    // Whether nothing of the group is selected.
    bool isEmpty() const { return calls + points + orphanEnds + failures == 0; }
    Nanoseconds mean() const;  // rounded down; 0 of none

    // To be called once all calls are counted: percentiles take a look at each of them.
    void tellPercentiles();
    Nanoseconds p50 = 0;
    Nanoseconds p90 = 0;
    Nanoseconds p99 = 0;
};

// What of a trace is counted: the caller, a CallSink, says of each record whether it is selected. A
// call counts where its start or its end is.
class CallStatistics {
  public:
    // Percentiles are exact for so many calls; beyond, large groups keep a sketch.
    static constexpr uint64_t kExactCalls = 50'000'000;

    explicit CallStatistics(GroupBy by, uint64_t exactCalls = kExactCalls)
        : by_(by), exactCalls_(exactCalls) {}

    // For CallSink::opened(): the call's tag.
    uint32_t open(const TraceRecord& record, const Call& call, bool selected);

    // For CallSink::closed(); whether the call counts.
    bool close(const Call& call, const Closing& closing, bool endSelected);

    // The groups of records that are selected.
    void countPoint(const TraceRecord& record, uint32_t thread);
    void countOrphanEnd(const TraceRecord& record, uint32_t thread);
    void countFailure(const TraceRecord& record, uint32_t thread);

    // In the order in which they appeared.
    std::vector<CallGroup>& groups() { return groups_; }

    // Whether percentiles of some group are told by a sketch.
    bool isSketch() const;

  private:
    // What tells groups apart, a key in short.
    struct Identity {
        uint64_t word;
        bool isObject = false;

        bool operator==(const Identity&) const = default;
    };
    struct IdentityHash {
        size_t operator()(const Identity& identity) const {
            return keyedHash(identity.word, identity.isObject ? 1 : 0);
        }
    };
    struct ValueHash {
        size_t operator()(uint64_t value) const { return keyedHash(value, 1); }
    };

    // The groups of a thread's open calls by their depth; what lies deeper is counted by group.
    static constexpr uint32_t kShallow = 4;
    struct ShallowCalls {
        std::array<uint32_t, kShallow> groups{};
        std::array<uint32_t, kShallow + 1> bits{};  // by depth: bitOf() of the groups around it
    };

    // Where a group's bit is not set, no search is needed.
    static uint32_t bitOf(uint32_t group) { return 1U << group % 32; }

    Identity identityOf(const TraceRecord& record, uint32_t thread) {
        const uint32_t code = codeOf(record.debugid);
        switch (by_) {
            case GroupBy::event: return {code};
            case GroupBy::driver: return {driverCodeOf(code)};
            case GroupBy::recordClass: return {classOf(code)};
            case GroupBy::thread: return {thread};
            case GroupBy::cpu: return {record.cpuid};
            case GroupBy::object: return {objectOf(record), hasObject(record.debugid)};
            case GroupBy::threadAndEvent: return {uint64_t{thread} << 32 | code};
        }
        return {};
    }
    uint32_t numberOf(const TraceRecord& record, uint32_t thread) {
        const Identity identity = identityOf(record, thread);
        return recent_.find(identity.word, identity,
                            [this, identity] { return searchGroup(identity); });
    }
    uint32_t searchGroup(const Identity& identity);
    GroupKey keyOf(const Identity& identity) const;
    uint32_t driverCodeOf(uint32_t code);
    bool isOutermost(const Call& call, uint32_t group);
    void keepRoom(CallGroup& group);

    GroupBy by_;
    uint64_t exactCalls_;
    uint64_t finished_ = 0;
    std::vector<CallGroup> groups_;
    tsl::robin_map<Identity, uint32_t, IdentityHash> groupByIdentity_;
    RecentlyFound<Identity, uint32_t, 9> recent_;      // groups
    std::map<std::string_view, uint32_t> firstCodes_;  // of each driver
    tsl::robin_map<uint32_t, uint32_t, ValueHash> driverCodes_;
    std::vector<ShallowCalls> shallow_;  // by thread
    // How many calls of a group are open on a thread, shallow ones aside.
    tsl::robin_map<uint64_t, uint32_t, ValueHash> nesting_;
};

}  // namespace sonaprobe
