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
#include "analysis/durations.h"
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

    bool operator==(const GroupKey&) const = default;
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
    struct KeyHash {
        size_t operator()(const GroupKey& key) const {
            return keyedHash(key.object ^ uint64_t{key.cpu} << 32,
                             uint64_t{key.thread} << 32 | key.code | (key.hasObject ? 1 : 0));
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

    GroupKey keyOf(const TraceRecord& record, uint32_t thread);
    uint32_t numberOf(const TraceRecord& record, uint32_t thread) {
        const GroupKey key = keyOf(record, thread);
        const uint64_t place = uint64_t{key.thread ^ key.cpu} << 32;
        return recent_.find(place ^ key.object ^ key.code, key, [&] { return numberOf(key); });
    }
    uint32_t numberOf(const GroupKey& key);
    uint32_t driverCodeOf(uint32_t code);
    bool isOutermost(const Call& call, uint32_t group);
    void keepRoom(CallGroup& group);

    GroupBy by_;
    uint64_t exactCalls_;
    uint64_t finished_ = 0;
    std::vector<CallGroup> groups_;
    tsl::robin_map<GroupKey, uint32_t, KeyHash> groupByKey_;
    RecentlyFound<GroupKey, uint32_t> recent_;         // groups by key
    std::map<std::string_view, uint32_t> firstCodes_;  // of each driver
    tsl::robin_map<uint32_t, uint32_t, ValueHash> driverCodes_;
    std::vector<ShallowCalls> shallow_;  // by thread
    // How many calls of a group are open on a thread, shallow ones aside.
    tsl::robin_map<uint64_t, uint32_t, ValueHash> nesting_;
};

}  // namespace sonaprobe
