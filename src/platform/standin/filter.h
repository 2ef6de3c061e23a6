// The filter of the facility: which debug ids a TraceInterest lets through.

#pragma once

#include "platform/kernel_abi.h"

namespace sonaprobe::standin {

constexpr bool knownInterest(uint32_t type) {
    return type == platform::kInterestSubclass || type == platform::kInterestRange ||
           type == platform::kInterestValues;
}

constexpr bool passes(const platform::TraceInterest& interest, uint32_t debugid) {
    switch (interest.type) {
        case platform::kInterestSubclass:
            return debugid >> 24 == interest.value1 && (debugid >> 16 & 0xFF) == interest.value2;
        case platform::kInterestRange:
            return interest.value1 <= debugid && debugid <= interest.value2;
        case platform::kInterestValues: {
            const uint32_t code = debugid & ~3U;
            return code == interest.value1 || code == interest.value2 || code == interest.value3 ||
                   code == interest.value4;
        }
        default: return false;
    }
}

}  // namespace sonaprobe::standin
