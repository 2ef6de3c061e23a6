// Whether 64 bytes look like a slot that a tracer wrote: what damaged files are put right by.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "record/trace_record.h"

namespace sonaprobe {

enum class ByteOrder : uint8_t { own, swapped };

constexpr ByteOrder otherThan(ByteOrder order) {
    return order == ByteOrder::own ? ByteOrder::swapped : ByteOrder::own;
}

// The slot in the 64 bytes from `at` on, which need no alignment.
TraceRecord slotAt(const std::byte* at, ByteOrder order);

// Whether one record may follow the other in a whole file, by their time stamps: up to some 8
// seconds back and an hour on at 1000 ticks a microsecond, longer at slower clocks.
constexpr bool isNear(uint64_t earlier, uint64_t later) {
    constexpr uint64_t kFarOn = uint64_t{1} << 42;    // ticks
    constexpr uint64_t kFarBack = uint64_t{1} << 33;  // ticks
    return later >= earlier ? later - earlier <= kFarOn : earlier - later <= kFarBack;
}

// From this sum of doubts on, 64 bytes are no slot.
constexpr unsigned kNoSlot = 3;

// What the slots of one file have in common.
class Plausibility {
  public:
    Plausibility();

    // What speaks against a slot, its time stamp aside: 0 nothing, 1 and 2 odd, kNoSlot or more no
    // slot at all. An empty slot is no slot here.
    unsigned doubts(const TraceRecord& slot) const {
        return isOrdinary(slot) ? 0 : doubtsOfOdd(slot);
    }

    // Whether nothing speaks against a record, in whatever file.
    static bool isOrdinary(const TraceRecord& slot) {
        return isOfDrivers(slot.debugid) && slot.reserved == 0 && slot.cpuid < kManyProcessors;
    }

    // Whether the class word is one that drivers and audio server use, or frequent in this file.
    bool isFamiliar(uint32_t debugid) const {
        if (isOfDrivers(debugid)) return true;
        const uint32_t word = classWordOf(debugid);
        constexpr uint64_t kFrequent = 64;  // one record in so many
        return recordsOfClassWord_[word] > 0 && recordsOfClassWord_[word] * kFrequent >= records_;
    }

    // Takes a record of the file as an example of what the others look like.
    void learn(const TraceRecord& record) {
        recordsOfClassWord_[classWordOf(record.debugid)]++;
        records_++;
    }

    // The same of so many ordinary ones, whose class words need no example.
    void learnOrdinary(uint64_t records) { records_ += records; }

  private:
    static constexpr uint32_t kManyProcessors = 256;

    // Whether the class word is one that drivers and audio server use.
    static constexpr bool isOfDrivers(uint32_t debugid) {
        const uint32_t word = classWordOf(debugid);
        return word == kAudioClassWord || word == classWordOf(kAudioServerKey);
    }

    unsigned doubtsOfOdd(const TraceRecord& slot) const;

    std::vector<uint32_t> recordsOfClassWord_;
    uint64_t records_ = 0;
};

}  // namespace sonaprobe
