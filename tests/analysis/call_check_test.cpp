// Where cycles that skip whole buffers place the records that are missing.

#include "analysis/call_check.h"

#include <gtest/gtest.h>

#include "analysis/event_traits.h"

namespace sonaprobe {
namespace {

constexpr uint64_t kBuffer = 512;  // samples

// A thread's cycles, a tick a nanosecond, with a record of a driver after each.
class Cycles {
  public:
    void add(uint64_t start, uint64_t sample) {
        take(kIoCycle | 1, start, sample);
        take(kIoCycle | 2, start + 10'000, sample + kBuffer);
        take(audioClassKey(20), start + 20'000, 0);
    }
    const std::vector<MissingStretch>& missing() const { return check_.missing(); }

  private:
    void take(uint32_t debugid, uint64_t tick, uint64_t arg1) {
        TraceRecord record{};
        record.timestamp = tick;
        record.arg1 = arg1;
        record.arg3 = kBuffer;
        record.debugid = debugid;
        check_.take(record, slot_);
        ++slot_;
    }

    CallCheck check_;
    uint64_t slot_ = 0;
};

struct Case {
    uint64_t period;  // ticks
    uint64_t buffers;
    uint64_t after;  // slot
};

TEST(CallCheck, SeveralCyclesAreMissingInASilenceThatHasRoomForThem) {
    const std::vector<Case> cases{
        {.period = 1'000'000, .buffers = 1, .after = 10},
        {.period = 1'000'000, .buffers = 5, .after = 11},
        // So many periods as no silence lasts, nor a number of nanoseconds holds.
        {.period = 10'000'000'000'000, .buffers = 1 << 20, .after = 10},
    };
    for (const auto& [period, buffers, after] : cases) {
        Cycles cycles;
        for (uint64_t i = 0; i < 4; ++i) cycles.add(i * period, i * kBuffer);
        cycles.add((4 + (buffers < 10 ? buffers : 0)) * period, (4 + buffers) * kBuffer);
        ASSERT_EQ(cycles.missing().size(), 1U) << buffers;
        EXPECT_EQ(cycles.missing()[0].sign, MissingSign::sampleTime);
        EXPECT_EQ(cycles.missing()[0].after, after) << buffers;
        EXPECT_EQ(cycles.missing()[0].before, 12U) << buffers;
    }
}

}  // namespace
}  // namespace sonaprobe
