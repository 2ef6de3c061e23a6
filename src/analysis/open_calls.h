// The calls that are open, by thread: a stack each.

#pragma once

#include <cstdint>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/call.h"
#include "analysis/keyed_hash.h"

namespace sonaprobe {

// Memory grows with the calls that are open at once and with threads. Each function takes the same
// time whatever is open.
class OpenCalls {
  public:
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    // What an end must match.
    struct Key {
        uint64_t object;
        uint32_t thread;
        uint32_t code;
        bool operator==(const Key&) const = default;
    };

    size_t size() const { return frames_.size() - unused_.size(); }
    size_t threads() const { return threads_.size(); }
    void addThread() { threads_.emplace_back(); }

    // The number of a thread's innermost call, kNone without any.
    uint32_t innermostOf(uint32_t thread) const { return threads_[thread].innermost; }

    // Null for kNone. Holds until the next call opens.
    Call* callAt(uint32_t number) { return number == kNone ? nullptr : &frames_[number].call; }

    // The number of the innermost call that matches, kNone without any.
    uint32_t find(const Key& key) const {
        const Thread& thread = threads_[key.thread];
        if (thread.innermost != thread.innermostShallow) {
            const auto deep = innermostDeep_.find(key);
            if (deep != innermostDeep_.end()) return deep->second;
        }
        uint32_t number = thread.innermostShallow;
        while (number != kNone && keyOf(frames_[number].call) != key) {
            number = frames_[number].parent;
        }
        return number;
    }

    // Opens a call inside the innermost one of its thread, which tells its depth.
    Call& push(const Call& call) {
        uint32_t number = static_cast<uint32_t>(frames_.size());
        if (unused_.empty()) {
            frames_.emplace_back();
        } else {
            number = unused_.back();
            unused_.pop_back();
        }
        Thread& thread = threads_[call.thread];
        Frame& frame = frames_[number];
        frame = {.call = call, .parent = thread.innermost};
        if (frame.parent == kNone) {
            thread.placeInBusy = static_cast<uint32_t>(busy_.size());
            busy_.push_back(call.thread);
        } else {
            frame.call.depth = frames_[frame.parent].call.depth + 1;
        }
        thread.innermost = number;
        if (frame.call.depth < kShallow) {
            thread.innermostShallow = number;
        } else {
            pushDeep(number);
        }
        return frame.call;
    }

    // Ends a thread's innermost call, which holds until the next one opens.
    const Call& pop(uint32_t threadNumber) {
        Thread& thread = threads_[threadNumber];
        const uint32_t number = thread.innermost;
        const Frame& frame = frames_[number];
        thread.innermost = frame.parent;
        if (frame.call.depth < kShallow) {
            thread.innermostShallow = frame.parent;
        } else {
            popDeep(frame);
        }
        if (frame.parent == kNone) {
            busy_[thread.placeInBusy] = busy_.back();
            threads_[busy_.back()].placeInBusy = thread.placeInBusy;
            busy_.pop_back();
        }
        unused_.push_back(number);
        return frame.call;
    }

    // Each call, in no order.
    template <class Visit>
    void forEach(const Visit& visit) const {
        for (const uint32_t thread : busy_) {
            for (uint32_t number = threads_[thread].innermost; number != kNone;) {
                visit(frames_[number].call);
                number = frames_[number].parent;
            }
        }
    }

    // Threads that have open calls, in no order.
    const std::vector<uint32_t>& busy() const { return busy_; }

  private:
    // Calls of less depth are searched for one by one; others have an index, which costs more than
    // such a search where calls are few.
    static constexpr uint32_t kShallow = 8;

    struct Frame {
        Call call;
        uint32_t parent = kNone;
        uint32_t sameBefore = kNone;  // of a deep one: the next deep one outwards of the same key
    };
    struct Thread {
        uint32_t innermost = kNone;
        uint32_t innermostShallow = kNone;
        uint32_t placeInBusy = 0;
    };
    struct Hash {
        size_t operator()(const Key& key) const {
            return keyedHash(key.object, uint64_t{key.thread} << 32 | key.code);
        }
    };

    static Key keyOf(const Call& call) { return {call.object, call.thread, call.code}; }

    void pushDeep(uint32_t number);
    void popDeep(const Frame& frame);

    std::vector<Frame> frames_;
    std::vector<uint32_t> unused_;  // frames
    std::vector<Thread> threads_;
    std::vector<uint32_t> busy_;
    tsl::robin_map<Key, uint32_t, Hash> innermostDeep_;
};

}  // namespace sonaprobe
