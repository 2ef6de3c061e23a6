// The indentation that follows the nesting of start and end events: one depth for all threads,
// never negative, held at its limit.

#pragma once

#include <cstdint>
#include <limits>

namespace sonaprobe {

// Each gives the blanks that the line has.
class Indentation {
  public:
    static constexpr uint32_t kMaxDepth = std::numeric_limits<int32_t>::max();

    explicit Indentation(uint32_t depth = 0) : depth_(depth) {}

    // A start: as many as the depth, which then grows by one.
    uint32_t in() { return depth_ < kMaxDepth ? depth_++ : depth_; }
    // An end: the depth shrinks by one, unless it is 0; then as many as the depth.
    uint32_t out() { return depth_ > 0 ? --depth_ : 0; }
    // Neither: as many as the depth.
    uint32_t pad() const { return depth_; }

  private:
    uint32_t depth_;
};

}  // namespace sonaprobe
