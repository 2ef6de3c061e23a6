// Ticks as time, by the divisor's inverse and by division.

#include "analysis/tick_rate.h"

#include <gtest/gtest.h>
#include <random>

namespace sonaprobe {
namespace {

TEST(TickRate, IsThatOfTheDivision) {
    std::mt19937_64 random(3);
    const auto anyWord = [&] { return random() >> random() % 64; };
    for (int n = 0; n < 200'000; ++n) {
        const uint64_t divisor = std::max<uint64_t>(anyWord(), 1);
        const uint64_t earlier = anyWord();
        const uint64_t later = n % 2 == 0 ? anyWord() : earlier + anyWord();
        ASSERT_EQ(TickRate(divisor).between(earlier, later), nanosecondsOf(later, earlier, divisor))
            << divisor << ": " << earlier << " to " << later;
    }
}

// Where a quotient that is a little too large or too small shows.
TEST(TickRate, IsExactBesideWholeMicroseconds) {
    constexpr uint64_t kMost = ~uint64_t{0};
    for (const uint64_t divisor :
         {uint64_t{1}, uint64_t{2}, uint64_t{3}, uint64_t{24}, uint64_t{1000}, uint64_t{1001},
          uint64_t{1} << 62, (uint64_t{1} << 63) + 1, kMost - 1, kMost}) {
        for (const uint64_t far : {uint64_t{0}, uint64_t{1} << 40, kMost / 2000, kMost / 2}) {
            for (uint64_t step = 0; step < 5; ++step) {
                const uint64_t later = far / divisor * divisor + step - 2;
                ASSERT_EQ(TickRate(divisor).between(0, later), nanosecondsOf(later, 0, divisor))
                    << divisor << ": " << later;
            }
        }
    }
}

TEST(TickRate, RoundsDownOnBothSidesOfZero) {
    EXPECT_EQ(TickRate(24).between(0, 1), 41);
    EXPECT_EQ(TickRate(24).between(1, 0), -42);
    EXPECT_EQ(TickRate(1).between(0, ~uint64_t{0}), INT64_MAX);
    EXPECT_EQ(TickRate(1).between(~uint64_t{0}, 0), INT64_MIN);
}

}  // namespace
}  // namespace sonaprobe
