// What a slot of a raw file is: a record, or one of those that are none.

#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "record/trace_record.h"

namespace sonaprobe {

enum class SlotKind : uint8_t { record, divisor, invalid, empty };

// Empty is a slot of 64 zero bytes.
inline SlotKind kindOf(const TraceRecord& slot) {
    switch (slot.debugid) {
        case kDivisorMarker: return SlotKind::divisor;
        case kInvalidMarker: return SlotKind::invalid;
        case 0:
            return std::ranges::all_of(std::as_bytes(std::span(&slot, 1)),
                                       [](std::byte byte) { return byte == std::byte{0}; })
                       ? SlotKind::empty
                       : SlotKind::record;
        default: return SlotKind::record;
    }
}

}  // namespace sonaprobe
