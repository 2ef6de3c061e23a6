// What was found lately, against a map of everything.

#include "analysis/recently_found.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <random>

namespace sonaprobe {
namespace {

using Counts = RecentlyFound<uint32_t, uint64_t, 4>;

TEST(RecentlyFound, LosesNothingOfWhatMakesRoom) {
    std::mt19937 random(3);
    Counts recent;
    std::map<uint32_t, uint64_t> left;
    std::map<uint32_t, uint64_t> all;
    for (int i = 0; i < 100'000; ++i) {
        const uint32_t key = static_cast<uint32_t>(random() % 200);
        ++all[key];
        ++recent.find(
            key, key, [] { return uint64_t{0}; },
            [&](uint32_t other, uint64_t count) { left[other] += count; });
    }
    EXPECT_FALSE(left.empty());
    recent.forEach([&](uint32_t key, uint64_t count) { left[key] += count; });
    EXPECT_EQ(left, all);
}

TEST(RecentlyFound, TwoKeysOfOnePlaceAreSearchedOnce) {
    Counts recent;
    int searches = 0;
    const auto find = [&](uint32_t key) {
        return recent.find(7, key, [&] {
            ++searches;
            return uint64_t{key} * 10;
        });
    };
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(find(1), 10U);
        EXPECT_EQ(find(2), 20U);
    }
    EXPECT_EQ(searches, 2);
    EXPECT_EQ(find(3), 30U);
    EXPECT_EQ(find(2), 20U);
    EXPECT_EQ(searches, 3) << "the one that was found earlier makes room";
    EXPECT_EQ(find(1), 10U);
    EXPECT_EQ(searches, 4);
}

}  // namespace
}  // namespace sonaprobe
