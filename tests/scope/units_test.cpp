// Numbers as people read them.

#include "scope/units.h"

#include <gtest/gtest.h>
#include <limits>

#include "scope/escape.h"

namespace sonaprobe::scope {
namespace {

TEST(DurationText, HasThreeDigitsThatMatter) {
    struct {
        int64_t nanoseconds;
        const char* text;
    } const cases[] = {
        {0, "0 ns"},
        {412, "412 ns"},
        {999, "999 ns"},
        {1000, "1.00 µs"},
        {412'300, "412 µs"},
        {999'499, "999 µs"},
        {999'500, "1.00 ms"},
        {2'850'000, "2.85 ms"},
        {16'940'000, "16.9 ms"},
        {9'996'000, "10.0 ms"},
        {99'960'000, "100 ms"},
        {59'900'000'000, "59.9 s"},
        {60'000'000'000, "1.00 min"},
        {3'600'000'000'000, "1.00 h"},
        {-2'850'000, "-2.85 ms"},
        {std::numeric_limits<int64_t>::min(), "-2562048 h"},
    };
    for (const auto& one : cases) EXPECT_EQ(durationText(one.nanoseconds), one.text);
}

TEST(TimeText, CountsMicrosecondsInGroups) {
    EXPECT_EQ(timeText(12'345'678'999), "12.345 678 s");
    EXPECT_EQ(timeText(-2'000), "-0.000 002 s");
    EXPECT_EQ(timeText(0), "0.000 000 s");
    EXPECT_EQ(timeText(std::numeric_limits<int64_t>::min()), "-9223372036.854 775 s");
}

TEST(Units, OtherNumbers) {
    EXPECT_EQ(countText(0), "0");
    EXPECT_EQ(countText(999), "999");
    EXPECT_EQ(countText(88'452), "88,452");
    EXPECT_EQ(countText(std::numeric_limits<uint64_t>::max()), "18,446,744,073,709,551,615");
    EXPECT_EQ(shareText(0.375), "37.5 %");
    EXPECT_EQ(shareText(0.0001), "<0.1 %");
    EXPECT_EQ(shareText(1), "100 %");
    EXPECT_EQ(wordText(0x5245c0c), "0x0000000005245c0c");
    EXPECT_EQ(shortWordText(0x5245c0c), "0x5245c0c");
    EXPECT_EQ(codeText(0x5245c0c), "0x05245C0C");
}

TEST(Escaped, LeavesNoByteThatATerminalObeys) {
    EXPECT_EQ(escaped("plain \\ text~"), "plain \\ text~");
    EXPECT_EQ(escaped(std::string("\x1b[31m\a\0\x7f", 8)), "\\x1b[31m\\x07\\x00\\x7f");
    EXPECT_EQ(escaped("a\nb\tc\r"), "a\\nb\\tc\\r");
    // A control character beyond ASCII, in UTF-8 and alone.
    EXPECT_EQ(escaped("\xc2\x9b"
                      "1m\x9b"),
              "\\xc2\\x9b1m\\x9b");
    for (int byte = 0; byte < 256; ++byte) {
        for (const char c : escaped(std::string(1, static_cast<char>(byte)))) {
            EXPECT_TRUE(c >= ' ' && c <= '~') << byte;
        }
    }
}

}  // namespace
}  // namespace sonaprobe::scope
