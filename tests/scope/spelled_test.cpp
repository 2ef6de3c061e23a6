// Times and numbers as people write them.

#include "analysis/spelled.h"

#include <gtest/gtest.h>

namespace sonaprobe {
namespace {

TEST(SpelledTime, HasANumberAndAUnit) {
    EXPECT_EQ(spelledTime("12.345s"), 12'345'000'000);
    EXPECT_EQ(spelledTime("20ms"), 20'000'000);
    EXPECT_EQ(spelledTime("412us"), 412'000);
    EXPECT_EQ(spelledTime("412µs"), 412'000);
    EXPECT_EQ(spelledTime("412 μs"), 412'000);
    EXPECT_EQ(spelledTime("90ns"), 90);
    EXPECT_EQ(spelledTime("1.5min"), 90'000'000'000);
    EXPECT_EQ(spelledTime("2h"), 7'200'000'000'000);
    EXPECT_EQ(spelledTime("-5ms"), -5'000'000);
    EXPECT_EQ(spelledTime(".5s"), 500'000'000);
    EXPECT_EQ(spelledTime("0.0000000019s"), 1);
}

TEST(SpelledTime, IsNothingElse) {
    for (const char* const text : {"", "s", "12", "12 parsecs", "1e3s", "--1s", "1.2.3s", "ms20"}) {
        EXPECT_EQ(spelledTime(text), std::nullopt) << text;
    }
}

TEST(SpelledTime, SaturatesBeyondWhatNanosecondsHold) {
    EXPECT_EQ(spelledTime("99999999999999999999h"), std::numeric_limits<Nanoseconds>::max());
    EXPECT_EQ(spelledTime("-99999999999999999999h"), std::numeric_limits<Nanoseconds>::min());
}

TEST(SpelledNumber, IsDecimalOrHexadecimal) {
    EXPECT_EQ(spelledNumber("21"), 21U);
    EXPECT_EQ(spelledNumber("0x1F"), 0x1FU);
    EXPECT_EQ(spelledNumber("18446744073709551615"), ~uint64_t{0});
    EXPECT_EQ(spelledNumber("-1"), ~uint64_t{0});
    for (const char* const text : {"", "0x", "x1F", "1F", "18446744073709551616", "1 2"}) {
        EXPECT_EQ(spelledNumber(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace sonaprobe
