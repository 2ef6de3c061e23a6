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

// How far a record's time stamp may be from the one before it in a whole file, in ticks: an hour on
// and some 8 seconds back at 1000 ticks a microsecond, more at slower clocks.
constexpr uint64_t kFarOn = uint64_t{1} << 42;
constexpr uint64_t kFarBack = uint64_t{1} << 33;

constexpr bool isNear(uint64_t earlier, uint64_t later) {
    return later >= earlier ? later - earlier <= kFarOn : earlier - later <= kFarBack;
}

// From this sum of doubts on, 64 bytes are no slot.
constexpr unsigned kNoSlot = 3;

// What the slots of one file have in common.
class Plausibility {
  public:
    // What speaks against a slot, its time stamp aside: 0 nothing, 1 and 2 odd, kNoSlot or more no
    // slot at all. An empty slot is no slot here.
    unsigned doubts(const TraceRecord& slot) const {
        return isOrdinary(slot) ? 0 : doubtsOfOdd(slot);
    }

    // Whether nothing speaks against a record, in whatever file.
    static bool isOrdinary(const TraceRecord& slot) { return oddBits(slot) == 0; }

    // 0 of an ordinary record. Those of many records may be put together, and looked at once.
    static uint64_t oddBits(const TraceRecord& slot) {
        return slot.reserved | slot.cpuid / kManyProcessors | oddClassBits(slot.debugid);
    }

    // Whether the class word is one that drivers and audio server use, or frequent in this file.
    bool isFamiliar(uint32_t debugid) const {
        if (isOfDrivers(debugid)) return true;
        constexpr uint64_t kFrequent = 64;  // one record in so many
        if (recordsOfOtherWord_.empty()) return false;
        const uint64_t records = recordsOfOtherWord_[classWordOf(debugid)];
        return records > 0 && records * kFrequent >= records_;
    }

    // Takes a record of the file as an example of what the others look like.
    void learn(const TraceRecord& record) {
        records_++;
        if (isOfDrivers(record.debugid)) return;
        if (recordsOfOtherWord_.empty()) recordsOfOtherWord_.resize(0x10000);
        recordsOfOtherWord_[classWordOf(record.debugid)]++;
    }

    // The same of so many ordinary ones, whose class words need no example.
    void learnOrdinary(uint64_t records) { records_ += records; }

  private:
    static constexpr uint32_t kManyProcessors = 256;

    // Whether the class word is one that drivers and audio server use.
    static constexpr bool isOfDrivers(uint32_t debugid) { return oddClassBits(debugid) == 0; }

    // 0 for those class words alone; of words of 16 bits no product is too large.
    static constexpr uint32_t oddClassBits(uint32_t debugid) {
        const uint32_t word = classWordOf(debugid);
        return (word ^ kAudioClassWord) * (word ^ classWordOf(kAudioServerKey));
    }

    unsigned doubtsOfOdd(const TraceRecord& slot) const;

    std::vector<uint32_t> recordsOfOtherWord_;  // by class word; empty before the first
    uint64_t records_ = 0;
};

}  // namespace sonaprobe
