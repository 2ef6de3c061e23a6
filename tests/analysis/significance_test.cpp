// The tests of significance, on samples whose answer is known.

#include "analysis/significance.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace sonaprobe {
namespace {

TEST(Significance, IncompleteBetaHasKnownValues) {
    EXPECT_NEAR(incompleteBeta(1, 1, 0.3), 0.3, 1e-12);
    EXPECT_NEAR(incompleteBeta(2, 3, 0.4), 0.5248, 1e-12);  // 1 less a binomial's lower tail
    EXPECT_NEAR(incompleteBeta(0.5, 0.5, 0.5), 0.5, 1e-12);
    EXPECT_NEAR(incompleteBeta(5, 0.5, 10 / (10 + 2.228 * 2.228)), 0.05, 1e-4);  // Student, 10
    EXPECT_EQ(incompleteBeta(3, 4, 0), 0);
    EXPECT_EQ(incompleteBeta(3, 4, 1), 1);
}

std::vector<uint64_t> sample(unsigned seed, size_t count, double mean) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> chance(mean, 300);
    std::vector<uint64_t> values(count);
    for (uint64_t& value : values) value = static_cast<uint64_t>(std::abs(chance(random)));
    return values;
}

TEST(Significance, SuperiorityIsTheShareOfPairs) {
    const std::vector<uint64_t> first{1, 2, 3, 4};
    const std::vector<uint64_t> second{2, 3, 4, 5};
    // Of 16 pairs 10 are larger and 3 are ties.
    EXPECT_DOUBLE_EQ(compareRanks(first, second).superiority, 11.5 / 16);
    EXPECT_DOUBLE_EQ(compareRanks(second, first).superiority, 4.5 / 16);
}

TEST(Significance, SamplesOfOneKindSeldomDiffer) {
    int rare = 0;
    for (unsigned seed = 0; seed < 400; seed += 2) {
        const RankResult result =
            compareRanks(sample(seed, 200, 1000), sample(seed + 1, 150, 1000));
        if (result.probability < 0.05) ++rare;
    }
    EXPECT_LE(rare, 16);  // of 200, where chance makes 10
}

TEST(Significance, AShiftIsFound) {
    const RankResult result = compareRanks(sample(1, 500, 1000), sample(2, 500, 1200));
    EXPECT_GT(result.superiority, 0.6);
    EXPECT_LT(result.probability, 1e-6);
}

TEST(Significance, ASlowWhileIsNoShift) {
    // A quarter of the second sample, all at one time, is slow: one happening, not 125.
    std::vector<uint64_t> second = sample(2, 500, 1000);
    const std::vector<uint64_t> slow = sample(3, 125, 2000);
    std::copy(slow.begin(), slow.end(), second.begin() + 100);
    EXPECT_GT(compareRanks(sample(1, 500, 1000), second).probability, 1e-5);
}

TEST(Significance, EqualValuesDoNotDiffer) {
    const std::vector<uint64_t> same(100, 7);
    EXPECT_EQ(compareRanks(same, same).probability, 1);
}

std::vector<double> repeated(std::vector<double> pattern, size_t times) {
    std::vector<double> values;
    for (size_t i = 0; i < times; ++i) {
        values.insert(values.end(), pattern.begin(), pattern.end());
    }
    return values;
}

TEST(Significance, RatesAreComparedByTheirExposure) {
    const std::vector<double> counts = repeated({3, 1, 2, 2}, 8);
    const std::vector<double> many = repeated({9, 3, 6, 6}, 8);
    const std::vector<double> second(32, 1);
    const std::vector<double> three(32, 3);
    EXPECT_LT(compareRates({counts, second}, {many, second}).probability, 1e-6);
    const RateResult same = compareRates({counts, second}, {many, three});
    EXPECT_DOUBLE_EQ(same.first, same.second);
    EXPECT_GT(same.probability, 0.5);
}

TEST(Significance, ABurstIsOneHappening) {
    std::vector<double> burst(32, 0);
    const std::vector<double> nothing(32, 0);
    const std::vector<double> second(32, 1);
    burst[5] = 300;
    EXPECT_GT(compareRates({burst, second}, {nothing, second}).probability, 0.1);
    const std::vector<double> spread(32, 300.0 / 32);
    EXPECT_LT(compareRates({spread, second}, {nothing, second}).probability, 1e-9);
}

}  // namespace
}  // namespace sonaprobe
