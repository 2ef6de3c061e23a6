// Doubles to integers without undefined values: what does not fit saturates, NaN gives 0.

#pragma once

#include <cstdint>
#include <limits>

namespace sonaprobe {

constexpr int64_t truncateToSigned(double value) {
    constexpr double kBeyond = 0x1p63;
    if (value >= -kBeyond && value < kBeyond) return static_cast<int64_t>(value);
    if (value != value) return 0;
    return value > 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
}

constexpr uint64_t truncateToUnsigned(double value) {
    constexpr double kBeyond = 0x1p64;
    if (value >= kBeyond) return std::numeric_limits<uint64_t>::max();
    return value > 0 ? static_cast<uint64_t>(value) : 0;
}

}  // namespace sonaprobe
