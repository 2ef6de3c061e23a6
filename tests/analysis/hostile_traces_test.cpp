// Traces made to be slow: with any of these a tracker that looks through what is open takes hours.

#include <gtest/gtest.h>

#include "analysis/call_tracker.h"

namespace sonaprobe {
namespace {

constexpr uint64_t kMany = 1'000'000;
constexpr uint32_t kMethod = 0x05245C0C;
constexpr uint32_t kOther = 0x05245C10;

class Counts : public CallSink {
  public:
    uint32_t opened(const TraceRecord&, const Call& call, const Call*) override {
        deepest = std::max(deepest, call.depth);
        return 0;
    }
    void closed(const Call&, const Call*, const Closing& closing) override {
        ++ends[static_cast<size_t>(closing.how)];
    }
    void point(const TraceRecord&, const Moment&) override {}
    void orphanEnd(const TraceRecord&, const Moment&) override { ++orphans; }

    uint64_t count(CallEnd how) const { return ends[static_cast<size_t>(how)]; }

    uint32_t deepest = 0;
    uint64_t ends[3] = {};
    uint64_t orphans = 0;
};

class HostileTraces : public testing::Test {
  protected:
    void take(uint32_t debugid, uint64_t time, uint64_t thread, uint64_t object = 1) {
        tracker_.take({.timestamp = time,
                       .arg1 = object,
                       .arg2 = 0,
                       .arg3 = 0,
                       .arg4 = 0,
                       .arg5 = thread,
                       .debugid = debugid,
                       .cpuid = 0,
                       .reserved = 0});
    }

    Counts counts_;
    CallTracker tracker_{counts_};
};

TEST_F(HostileTraces, DeepRecursionUnderOrphanEnds) {
    for (uint64_t i = 0; i < kMany; ++i) take(kMethod | 1, i, 7, i);
    for (uint64_t i = 0; i < kMany; ++i) take(kOther | 2, kMany + i, 7, i);
    for (uint64_t i = kMany; i-- > 0;) take(kMethod | 2, 3 * kMany - i, 7, i);
    EXPECT_EQ(counts_.deepest, kMany - 1);
    EXPECT_EQ(counts_.orphans, kMany);
    EXPECT_EQ(counts_.count(CallEnd::finished), kMany);
}

TEST_F(HostileTraces, OneEndThatCutsOffAll) {
    for (uint64_t i = 0; i < kMany; ++i) take(kMethod | 1, i, 7, i);
    take(kMethod | 2, kMany, 7, 0);
    EXPECT_EQ(counts_.count(CallEnd::cutOff), kMany - 1);
    EXPECT_EQ(counts_.count(CallEnd::finished), 1);
}

TEST_F(HostileTraces, AStepBackAtEachRecordOfManyThreads) {
    for (uint64_t i = 0; i < kMany; ++i) take(kMethod | 1, 2 * kMany, i);
    for (uint64_t i = 0; i < kMany; ++i) take(kMethod | 1, kMany - i, 7);
    tracker_.finish();
    EXPECT_EQ(tracker_.clock().threads(), kMany);
    EXPECT_EQ(tracker_.clock().stepsBack(), kMany);
    EXPECT_EQ(counts_.count(CallEnd::cutOff), 2 * kMany - 1);
    EXPECT_EQ(counts_.count(CallEnd::unfinished), 1);
}

TEST_F(HostileTraces, AnotherDivisorAtEachSlotOfManyThreads) {
    for (uint64_t i = 0; i < kMany; ++i) take(kMethod | 1, 5, i);
    for (uint64_t i = 0; i < kMany; ++i) take(kDivisorMarker, 1 + i % 2, 0);
    EXPECT_EQ(counts_.count(CallEnd::cutOff), kMany);
}

}  // namespace
}  // namespace sonaprobe
