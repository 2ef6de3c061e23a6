// Random sound traces as bytes, and the damage that is planted in them.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "record/trace_record.h"

namespace sonaprobe {

inline bool operator==(const TraceRecord& one, const TraceRecord& other) {
    return std::memcmp(&one, &other, sizeof one) == 0;
}

}  // namespace sonaprobe

namespace sonaprobe::test {

using Bytes = std::vector<std::byte>;

class Random {
  public:
    explicit Random(uint64_t seed) : engine_(seed) {}

    uint64_t bits() { return engine_(); }
    uint64_t below(uint64_t limit) { return engine_() % limit; }
    bool oneIn(uint64_t n) { return below(n) == 0; }

  private:
    std::mt19937_64 engine_;
};

// What a trace's codes are like.
enum class Codes : uint8_t { drivers, oneOtherClassWord, any };

// A divisor and records: several threads, a clock that runs, argument words that are often zero,
// small or addresses. With disorder, records of other threads come somewhat too late.
std::vector<TraceRecord> soundTrace(Random& random, Codes codes, size_t records,
                                    bool disorder = false);

Bytes bytesOf(const std::vector<TraceRecord>& slots);
Bytes randomBytes(Random& random, size_t count);

// The trace as a machine of the other byte order writes it.
std::vector<TraceRecord> swapped(std::vector<TraceRecord> slots);

}  // namespace sonaprobe::test
