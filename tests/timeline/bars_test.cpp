// The pyramid of calls: what each of its levels keeps.

#include "scope/timeline/bars.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace sonaprobe::scope::timeline {
namespace {

using testing::ElementsAre;

Bar call(Nanoseconds begin, Nanoseconds end, uint64_t record, uint8_t flags = 0) {
    return {.begin = begin, .end = end, .record = record, .event = 1, .flags = flags};
}

std::vector<uint64_t> recordsOf(const std::vector<Bar>& bars) {
    std::vector<uint64_t> records;
    records.reserve(bars.size());
    for (const Bar& bar : bars) records.push_back(bar.record);
    return records;
}

TEST(Pyramid, EachLevelIsFourTimesAsCoarseAsTheOneBefore) {
    const Pyramid pyramid(100, 6400);
    ASSERT_EQ(pyramid.levels(), 4U);
    EXPECT_EQ(pyramid.resolution(0), 100);
    EXPECT_EQ(pyramid.resolution(3), 6400);
}

TEST(Pyramid, ShortCallsOfACellAreOneWithTheLongestOnesName) {
    Pyramid pyramid(100, 100);
    pyramid.add(0, call(0, 10, 1));
    pyramid.add(0, call(20, 50, 2, kFailure));
    pyramid.add(0, call(60, 70, 3));
    pyramid.add(0, call(110, 120, 4));
    pyramid.finish();
    const std::vector<Bar>& bars = pyramid.bars(0, 0);
    EXPECT_THAT(recordsOf(bars), ElementsAre(2, 4));
    EXPECT_EQ(bars[0].begin, 0);
    EXPECT_EQ(bars[0].end, 70);
    EXPECT_EQ(bars[0].flags, kMerged | kFailure);
    EXPECT_EQ(bars[1].flags, 0);
}

// Several processors may write a record that is earlier than the first one.
TEST(Pyramid, TheTwoCellsAroundTheFirstRecordAreOne) {
    Pyramid pyramid(100, 100);
    for (const Nanoseconds begin : {-201, -200, -101, -100, -99, 0, 99, 100}) {
        pyramid.add(0, call(begin, begin + 1, static_cast<uint64_t>(begin + 201)));
    }
    pyramid.finish();
    EXPECT_THAT(recordsOf(pyramid.bars(0, 0)), ElementsAre(0, 100, 102, 301));
}

TEST(Pyramid, ALongCallStandsAloneAndPartsWhatIsAroundIt) {
    Pyramid pyramid(100, 100);
    pyramid.add(0, call(0, 10, 1));
    pyramid.add(0, call(10, 110, 2));
    pyramid.add(0, call(110, 115, 3));
    pyramid.finish();
    EXPECT_THAT(recordsOf(pyramid.bars(0, 0)), ElementsAre(1, 2, 3));
}

// Whatever the calls: a level keeps those of its resolution as they are, covers all others, and has
// no more than two bars for each cell that is not a long call.
TEST(Pyramid, RandomCallsAreKeptOrCovered) {
    std::mt19937 random(7);
    const auto below = [&](Nanoseconds most) { return static_cast<Nanoseconds>(random()) % most; };
    std::vector<Bar> calls;
    Nanoseconds now = 0;
    for (uint64_t i = 0; i < 20'000; ++i) {
        const Nanoseconds begin = now + below(40);
        now = begin + below(below(20) == 0 ? 5000 : 60);
        calls.push_back(call(begin, now, i));
    }
    Pyramid pyramid(64, 4096);
    for (const Bar& each : calls) pyramid.add(0, each);
    pyramid.finish();
    for (size_t level = 0; level < pyramid.levels(); ++level) {
        const Nanoseconds resolution = pyramid.resolution(level);
        const std::vector<Bar>& bars = pyramid.bars(level, 0);
        size_t at = 0;
        size_t longCalls = 0;
        for (const Bar& each : calls) {
            while (at < bars.size() && bars[at].end < each.end) ++at;
            ASSERT_LT(at, bars.size());
            ASSERT_LE(bars[at].begin, each.begin) << "level " << level << ", call " << each.record;
            if (each.end - each.begin < resolution) continue;
            ++longCalls;
            EXPECT_EQ(bars[at].begin, each.begin);
            EXPECT_EQ(bars[at].end, each.end);
            EXPECT_EQ(bars[at].record, each.record);
            EXPECT_EQ(bars[at].flags, 0);
        }
        EXPECT_LE(bars.size(), static_cast<size_t>(now / resolution) + 1 + 2 * longCalls);
    }
}

TEST(Rows, StandInTheOrderOfThreadAndDepth) {
    Rows rows;
    EXPECT_EQ(rows.numberOf({5, 1, false}), 0U);
    EXPECT_EQ(rows.numberOf({5, 0, true}), 1U);
    EXPECT_EQ(rows.numberOf({2, 3, false}), 2U);
    EXPECT_EQ(rows.numberOf({5, 0, false}), 3U);
    EXPECT_EQ(rows.numberOf({5, 1, false}), 0U);
    EXPECT_THAT(rows.inOrder(), ElementsAre(2, 3, 1, 0));
}

TEST(Rows, CallsDeeperThanAPageCanSayShareTheDeepestRow) {
    Rows rows;
    EXPECT_EQ(rows.numberOf({0, kDeepest, false}), rows.numberOf({0, 1'000'000, false}));
}

}  // namespace
}  // namespace sonaprobe::scope::timeline
