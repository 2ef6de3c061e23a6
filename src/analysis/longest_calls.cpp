// Keeps the longest calls in a heap.

#include "analysis/longest_calls.h"

#include <algorithm>

namespace sonaprobe {

namespace {

bool comesFirst(const LongCall& one, const LongCall& other) {
    if (one.length() != other.length()) return one.length() > other.length();
    return one.call.startSlot < other.call.startSlot;
}

}  // namespace

void LongestCalls::open(const TraceRecord& record, const Call& call, Nanoseconds shownStart) {
    startBySlot_.emplace(call.startSlot, Start{record, shownStart});
}

void LongestCalls::close(const Call& call, const Closing& closing, bool counts) {
    const auto start = startBySlot_.find(call.startSlot);
    if (counts && closing.how == CallEnd::finished) {
        const LongCall candidate{call,         closing.time,
                                 closing.slot, start->second.record,
                                 *closing.end, start->second.shown};
        if (heap_.size() < kept_ || comesFirst(candidate, heap_.front())) {
            heap_.push_back(candidate);
            std::ranges::push_heap(heap_, comesFirst);
            if (heap_.size() > kept_) {
                std::ranges::pop_heap(heap_, comesFirst);
                heap_.pop_back();
            }
        }
    }
    startBySlot_.erase(start);
}

std::vector<LongCall> LongestCalls::sorted() const {
    std::vector<LongCall> calls = heap_;
    std::ranges::sort(calls, comesFirst);
    return calls;
}

}  // namespace sonaprobe
