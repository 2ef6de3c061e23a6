// Who calls whom: calls merged by the path of events that leads to them.

#pragma once

#include <cstdint>
#include <span>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/call_tracker.h"

namespace sonaprobe {

// The calls of one event on one path; or, where threads are kept apart, what a thread's path begins
// with.
struct CallNode {
    static constexpr uint32_t kNone = 0xFFFFFFFF;
    static constexpr uint32_t kThread = 1;  // in the place of a code; no code is odd

    uint32_t parent = kNone;
    uint32_t code = 0;
    uint32_t thread = 0;  // the clock's number; 0 where threads are merged
    uint32_t depth = 0;   // 0 at the root
    uint64_t calls = 0;
    uint64_t cutOff = 0;
    uint64_t unfinished = 0;

    // Of all calls, however they ended: a call that is cut off or unfinished has spent its time as
    // well.
    Nanoseconds time = 0;
    Nanoseconds self = 0;

    void add(const CallNode& other);
};

class CallTree {
  public:
    enum class Threads : uint8_t { merged, apart };

    explicit CallTree(Threads threads = Threads::merged) : threads_(threads) {}

    // For CallSink::opened(), with the node of the call around it, or kNone: the call's node.
    uint32_t open(const Call& call, uint32_t parent);

    // For CallSink::closed(), with the call's node.
    void close(const Call& call, const Closing& closing, uint32_t node);

    // Parents stand before their children.
    const std::vector<CallNode>& nodes() const { return nodes_; }

    // The events of `codes` as roots, and what they call. Calls inside another of `codes` count
    // there alone.
    CallTree calleesOf(std::span<const uint32_t> codes) const;

    // The events of `codes` as roots, who calls them as children, who calls those below, as far as
    // `depth`; each with the calls and times of the root that it leads to.
    CallTree callersOf(std::span<const uint32_t> codes, uint32_t depth) const;

  private:
    struct Key {
        uint32_t parent;
        uint32_t code;
        uint32_t thread;
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        size_t operator()(const Key& key) const {
            return keyedHash(uint64_t{key.parent} << 32 | key.code, key.thread);
        }
    };

    uint32_t nodeOf(uint32_t parent, uint32_t code, uint32_t thread = 0);

    Threads threads_;
    std::vector<CallNode> nodes_;
    tsl::robin_map<Key, uint32_t, Hash> nodeByKey_;
};

}  // namespace sonaprobe
