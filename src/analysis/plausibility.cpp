// Doubts about slots. The reserved word and the high bytes of the processor are zero in every slot,
// and class words are few: bytes from another place of a record seldom have all three.

#include "analysis/plausibility.h"

#include <cstring>

namespace sonaprobe {

namespace {

void swapBytes(uint32_t& word) { word = __builtin_bswap32(word); }
void swapBytes(uint64_t& word) { word = __builtin_bswap64(word); }

bool hasArguments(const TraceRecord& slot) {
    return (slot.arg1 | slot.arg2 | slot.arg3 | slot.arg4 | slot.arg5 | slot.cpuid |
            slot.reserved) != 0;
}

}  // namespace

TraceRecord slotAt(const std::byte* at, ByteOrder order) {
    TraceRecord slot{};
    std::memcpy(&slot, at, sizeof slot);
    if (order == ByteOrder::own) return slot;
    for (uint64_t* word : {&slot.timestamp, &slot.arg1, &slot.arg2, &slot.arg3, &slot.arg4,
                           &slot.arg5, &slot.reserved}) {
        swapBytes(*word);
    }
    swapBytes(slot.debugid);
    swapBytes(slot.cpuid);
    return slot;
}

unsigned Plausibility::doubtsOfOdd(const TraceRecord& slot) const {
    if (slot.debugid == kInvalidMarker) return 0;
    if (slot.debugid == kDivisorMarker) return hasArguments(slot) ? 1 : 0;
    unsigned sum = 0;
    if (slot.reserved != 0) sum += 2;
    if (slot.cpuid >= kManyProcessors) sum += 2;
    if (codeOf(slot.debugid) == 0) return sum + kNoSlot;
    if (classWordOf(slot.debugid) == 0) return sum + 2;
    return isFamiliar(slot.debugid) ? sum : sum + 1;
}

}  // namespace sonaprobe
