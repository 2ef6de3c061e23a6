// Percentiles, exact and by sketch.

#include "analysis/durations.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <random>

#include "analysis/call_statistics.h"

namespace sonaprobe {
namespace {

// By sorting them all.
Nanoseconds nearestRank(std::vector<Nanoseconds> lengths, unsigned percent) {
    std::ranges::sort(lengths);
    const size_t rank = (lengths.size() * percent + 99) / 100;
    return lengths[rank - 1];
}

std::vector<Nanoseconds> randomLengths(size_t count) {
    std::mt19937_64 random(7);
    std::vector<Nanoseconds> lengths(count);
    // Of all sizes alike, up to the longest.
    for (Nanoseconds& length : lengths) {
        length = static_cast<Nanoseconds>((random() >> 1) >> random() % 63);
    }
    return lengths;
}

TEST(Durations, PercentilesAreExact) {
    for (const size_t count : {1U, 2U, 99U, 100U, 101U, 5000U}) {
        const std::vector<Nanoseconds> lengths = randomLengths(count);
        Durations durations;
        for (const Nanoseconds length : lengths) durations.add(length);
        const std::array percents{50U, 90U, 99U, 100U, 10U, 50U};
        std::vector<Nanoseconds> expected;
        expected.reserve(percents.size());
        for (const unsigned percent : percents) expected.push_back(nearestRank(lengths, percent));
        EXPECT_EQ(durations.percentiles(percents), expected) << count;
    }
}

TEST(Durations, PercentilesTellOfLengthsThatCameLater) {
    const std::vector<Nanoseconds> lengths = randomLengths(20'000);
    Durations durations;
    for (size_t count = 1; count <= lengths.size(); ++count) {
        durations.add(lengths[count - 1]);
        if (count % 2500 != 0) continue;
        const std::vector<Nanoseconds> known(lengths.begin(),
                                             lengths.begin() + static_cast<ptrdiff_t>(count));
        EXPECT_EQ(durations.percentile(95), nearestRank(known, 95)) << count;
    }
}

TEST(Durations, ASketchKeepsItsError) {
    const std::vector<Nanoseconds> lengths = randomLengths(100'000);
    Durations durations;
    for (size_t i = 0; i < lengths.size(); ++i) {
        if (i == lengths.size() / 2) durations.becomeSketch();
        durations.add(lengths[i]);
    }
    ASSERT_TRUE(durations.isSketch());
    EXPECT_EQ(durations.count(), lengths.size());
    EXPECT_EQ(durations.max(), *std::ranges::max_element(lengths));
    for (unsigned percent = 1; percent <= 100; ++percent) {
        const auto exact = static_cast<double>(nearestRank(lengths, percent));
        const auto told = static_cast<double>(durations.percentile(percent));
        EXPECT_LE(std::abs(told - exact), DurationSketch::kError * exact + 0.5) << percent;
    }
}

TEST(Durations, FewLengthsAreKeptAsTheyAre) {
    Durations durations;
    for (uint64_t i = 1; i < DurationSketch::kMostSizes; ++i) durations.add(1000);
    durations.becomeSketch();
    EXPECT_FALSE(durations.isSketch());
}

TEST(CallStatistics, LargeGroupsBecomeSketchesBeyondTheExactCalls) {
    constexpr uint64_t kExact = 2 * DurationSketch::kMostSizes;
    CallStatistics statistics(GroupBy::event, kExact);
    const auto add = [&](uint64_t calls) {
        for (uint64_t i = 0; i < calls; ++i) {
            TraceRecord record{};
            record.debugid = 0x01400005;
            Call call;
            call.code = 0x01400004;
            call.tag = statistics.open(record, call, true);
            statistics.close(call, {CallEnd::finished, 500'000, 0}, false);
        }
    };
    add(kExact);
    EXPECT_FALSE(statistics.isSketch());
    add(1);
    EXPECT_TRUE(statistics.isSketch());
    EXPECT_EQ(statistics.groups()[0].finished(), kExact + 1);
    EXPECT_NEAR(static_cast<double>(statistics.groups()[0].durations.percentile(50)), 500'000,
                500'000 * DurationSketch::kError);
}

}  // namespace
}  // namespace sonaprobe
