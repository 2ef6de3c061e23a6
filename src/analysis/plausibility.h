// Whether 64 bytes look like a slot that a tracer wrote: what damaged files are put right by.

#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/tally.h"
#include "record/trace_record.h"

namespace sonaprobe {

enum class ByteOrder : uint8_t { own, swapped };

constexpr ByteOrder otherThan(ByteOrder order) {
    return order == ByteOrder::own ? ByteOrder::swapped : ByteOrder::own;
}

// The slot in the 64 bytes from `at` on, which need no alignment.
TraceRecord slotAt(const std::byte* at, ByteOrder order);

// Whether one record may follow the other in a whole file: up to some 8 seconds back and an hour
// on at 1000 ticks a microsecond, longer at slower clocks.
inline bool isNear(const TraceRecord& earlier, const TraceRecord& later) {
    constexpr uint64_t kFarOn = uint64_t{1} << 42;    // ticks
    constexpr uint64_t kFarBack = uint64_t{1} << 33;  // ticks
    return later.timestamp >= earlier.timestamp ? later.timestamp - earlier.timestamp <= kFarOn
                                                : earlier.timestamp - later.timestamp <= kFarBack;
}

// From this sum of doubts on, 64 bytes are no slot.
constexpr unsigned kNoSlot = 3;

// What the slots of one file have in common.
class Plausibility {
  public:
    // What speaks against a slot, its time stamp aside: 0 nothing, 1 and 2 odd, kNoSlot or more no
    // slot at all. An empty slot is no slot here.
    unsigned doubts(const TraceRecord& slot) const {
        const bool ordinary =
            isOfAudio(slot.debugid) && slot.reserved == 0 && slot.cpuid < kManyProcessors;
        return ordinary ? 0 : doubtsOfOdd(slot);
    }

    // Whether the class word is one that drivers and audio server use, or frequent in this file.
    bool isFamiliar(uint32_t debugid) const {
        if (isOfAudio(debugid)) return true;
        constexpr uint64_t kFrequent = 64;  // one record in so many
        const auto& counts = recordsOfOtherClassWord_.counts();
        const auto found = counts.find(classWordOf(debugid));
        return found != counts.end() && found->second * kFrequent >= records_;
    }

    // Takes a record of the file as an example of what the others look like.
    void learn(const TraceRecord& record) {
        if (!isOfAudio(record.debugid)) recordsOfOtherClassWord_.add(classWordOf(record.debugid));
        records_++;
    }

  private:
    static constexpr uint32_t kManyProcessors = 256;

    static bool isOfAudio(uint32_t debugid) {
        constexpr uint32_t kServerClassWord = classWordOf(kAudioServerKey);
        const uint32_t word = classWordOf(debugid);
        return word == kAudioClassWord || word == kServerClassWord;
    }

    unsigned doubtsOfOdd(const TraceRecord& slot) const;

    Tally recordsOfOtherClassWord_;
    uint64_t records_ = 0;
};

}  // namespace sonaprobe
