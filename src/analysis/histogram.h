// How the times of some events' calls spread, by powers of two.

#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "analysis/call_tracker.h"

namespace sonaprobe {

class Histogram {
  public:
    explicit Histogram(std::vector<uint32_t> codes) : codes_(std::move(codes)) {}

    // Finished calls of the events count, others do not.
    void add(const Call& call, const Closing& closing) {
        if (closing.how != CallEnd::finished || std::ranges::count(codes_, call.code) == 0) return;
        const auto length = static_cast<uint64_t>(closing.lengthOf(call));
        ++counts_[static_cast<size_t>(std::bit_width(length | 1)) - 1];
    }

    const std::vector<uint32_t>& codes() const { return codes_; }

    // Place n counts those of 2^n nanoseconds and more, up to twice as long; place 0 those of 0
    // too.
    const std::array<uint64_t, 64>& counts() const { return counts_; }

  private:
    std::vector<uint32_t> codes_;
    std::array<uint64_t, 64> counts_{};
};

}  // namespace sonaprobe
