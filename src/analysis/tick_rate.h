// Ticks of the trace clock as lengths of time.

#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

#include "analysis/keyed_hash.h"

namespace sonaprobe {

// They saturate.
using Nanoseconds = int64_t;

inline Nanoseconds saturated(Wide nanoseconds) {
    constexpr Wide kLeast = std::numeric_limits<Nanoseconds>::min();
    constexpr Wide kMost = std::numeric_limits<Nanoseconds>::max();
    return static_cast<Nanoseconds>(std::clamp(nanoseconds, kLeast, kMost));
}

inline Nanoseconds saturatedSum(Nanoseconds one, Nanoseconds other) {
    Nanoseconds sum = 0;
    return __builtin_add_overflow(one, other, &sum) ? saturated(Wide{one} + other) : sum;
}

inline void addTo(Nanoseconds& sum, Nanoseconds more) { sum = saturatedSum(sum, more); }

inline Nanoseconds saturatedDifference(Nanoseconds one, Nanoseconds other) {
    Nanoseconds rest = 0;
    return __builtin_sub_overflow(one, other, &rest) ? saturated(Wide{one} - other) : rest;
}

// From one tick of the trace clock to a later one, rounded down; below 0 where it is an earlier
// one. The divisor is not 0.
Nanoseconds nanosecondsOf(uint64_t laterTick, uint64_t earlierTick, uint64_t ticksPerMicrosecond);

// The same for one divisor and many ticks: multiplies by the divisor's inverse wherever that gives
// the quotient exactly.
class TickRate {
  public:
    explicit constexpr TickRate(uint64_t ticksPerMicrosecond) : divisor_(ticksPerMicrosecond) {
        if (divisor_ == 1) return;
        // With `bits` such that the divisor is at most 2^bits, x / divisor is
        // x * inverse >> (63 + bits) for each x below 2^63 (Granlund and Montgomery 1994).
        const auto bits = static_cast<unsigned>(std::bit_width(divisor_ - 1));
        const UnsignedWide power = UnsignedWide{1} << (63 + bits);
        inverse_ = static_cast<uint64_t>((power + divisor_ - 1) / divisor_);
        shift_ = bits - 1;
        exactTicks_ = ((uint64_t{1} << 63) - 1) / 1000;
    }

    uint64_t ticksPerMicrosecond() const { return divisor_; }

    // From one tick to a later one.
    Nanoseconds between(uint64_t earlierTick, uint64_t laterTick) const {
        const uint64_t ticks = laterTick - earlierTick;
        if (laterTick < earlierTick || ticks > exactTicks_) {
            return nanosecondsOf(laterTick, earlierTick, divisor_);
        }
        const uint64_t thousandfold = ticks * 1000;
        const UnsignedWide product = UnsignedWide{thousandfold} * inverse_;
        return static_cast<Nanoseconds>(static_cast<uint64_t>(product >> 64) >> shift_);
    }

  private:
    uint64_t divisor_;
    uint64_t inverse_ = 0;
    uint64_t exactTicks_ = 0;
    unsigned shift_ = 0;
};

}  // namespace sonaprobe
