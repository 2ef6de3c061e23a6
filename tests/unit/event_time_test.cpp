// The time text's bookkeeping, its behaviour at the limits of the arithmetic, and spans in seconds.

#include "lines/event_time.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>

#include "captured_output.h"
#include "lines/output_line.h"
#include "lines/prefix.h"
#include "lines/unclassified.h"
#include "probe/settings.h"

namespace sonaprobe {
namespace {

constexpr uint64_t kMostTicks = std::numeric_limits<uint64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class EventTime : public testing::Test {
  protected:
    void SetUp() override {
        settings = {};
        text(0);  // forgets the last stamp
    }

    static std::string text(uint64_t timestamp) {
        char room[kEventTimeRoom];
        return std::string(formatEventTime(timestamp, room));
    }
    static TraceRecord recordAt(uint64_t timestamp) {
        TraceRecord record{};
        record.timestamp = timestamp;
        record.debugid = 0x05243014;  // of a class without decoder
        return record;
    }

    // Without the eight characters of the wall clock and the blank behind them.
    static std::string numbers(uint64_t timestamp) { return text(timestamp).substr(9); }
};

TEST_F(EventTime, TheFirstDeltaIsZeroAndEachOtherOneCountsFromTheLast) {
    settings.tickDivisor = 24.0;
    EXPECT_EQ(numbers(24'000'000), "[   1000000][         0 us]");
    EXPECT_EQ(numbers(24'000'240), "[   1000010][        10 us]");
    EXPECT_EQ(numbers(24'000'000), "[   1000000][       -10 us]");
}

// Near stamps share most of their text; each must come out as if it stood alone.
TEST_F(EventTime, WalksOfNearAndFarStampsAreThoseOfPrintf) {
    constexpr uint64_t kStarts[] = {1, 9'998, 10'000, 99'990'000, 9'999'989'990, 10'000'000'000};
    std::mt19937 random(1);
    for (const uint64_t start : kStarts) {
        SetUp();
        settings.tickDivisor = 1.0;
        auto before = static_cast<int64_t>(start);
        text(start);
        for (int step = 0; step < 2'000; ++step) {
            const auto delta = static_cast<int64_t>(random() % (random() % 8 == 0 ? 20'000 : 40)) -
                               (random() % 16 == 0 ? 30 : 0);
            const int64_t now = std::max<int64_t>(before + delta, 1);
            char expected[64];
            std::snprintf(expected, sizeof expected, "[%10" PRId64 "][%10" PRId64 " us]", now,
                          now - before);
            ASSERT_EQ(numbers(static_cast<uint64_t>(now)), std::string(expected)) << before;
            before = now;
        }
    }
}

TEST_F(EventTime, EveryCallCountsWhateverFormIsPrinted) {
    for (const uint32_t mode : {0U, kKernelTime, kLocalTime, kKernelTime | kLocalTime}) {
        settings.timeMode = mode;
        text(5'000'000);
        settings.timeMode = kLocalTime;
        EXPECT_EQ(numbers(6'000'000), "[      6000][      1000 us]") << mode;
    }
}

TEST_F(EventTime, ModeZeroWritesNothing) {
    settings.timeMode = 0;
    char room[kEventTimeRoom] = "as it was";
    EXPECT_EQ(formatEventTime(5'000'000, room), "");
    EXPECT_STREQ(room, "as it was");
}

TEST_F(EventTime, TheLocalFormWinsOverTheKernelForm) {
    settings.timeMode = kKernelTime | kLocalTime;
    EXPECT_EQ(numbers(5'000'000), "[      5000][         0 us]");
}

TEST_F(EventTime, TheClockIsThatOfPrinting) {
    const auto clock = [] {
        const std::time_t now = std::time(nullptr);
        char room[9];
        std::strftime(room, sizeof room, "%H:%M:%S", std::localtime(&now));
        return std::string(room);
    };
    const std::string before = clock();
    const std::string shown = text(0).substr(0, 8);
    const std::string after = clock();
    EXPECT_TRUE(shown == before || shown == after) << before << " " << shown << " " << after;
}

TEST_F(EventTime, TheKernelFormDropsMinutesAndShowsNoSeparator) {
    settings.timeMode = kKernelTime;
    EXPECT_EQ(text(61'234'567'000), "01234.567");
    EXPECT_EQ(text(12'345'678'000), "12345.678");
    EXPECT_EQ(text(0), "00000.000");
}

TEST_F(EventTime, StaysDefinedBeyondTheArithmetic) {
    constexpr struct {
        double divisor;
        uint64_t timestamp;
        const char* local;  // both numbers, before the text is cut
        const char* kernel;
    } kCases[] = {
        {0.0, 1, "[9223372036854775807][         0 u", "49551.615"},
        {0.0, 0, "[         0][         0 us]", "00000.000"},  // 0 / 0
        {NAN, 1, "[         0][         0 us]", "00000.000"},
        {kInfinity, kMostTicks, "[         0][         0 us]", "00000.000"},
        {1.0, kMostTicks, "[9223372036854775807][         0 u", "49551.615"},
        {5e-324, kMostTicks, "[9223372036854775807][         0 u", "49551.615"},
        {18446744073709551616.0, kMostTicks, "[         1][         0 us]", "00000.001"},
    };
    for (const auto& [divisor, timestamp, local, kernel] : kCases) {
        SetUp();
        settings.tickDivisor = divisor;
        EXPECT_EQ(numbers(timestamp), local) << divisor;
        settings.timeMode = kKernelTime;
        EXPECT_EQ(text(timestamp), kernel) << divisor;
    }
}

TEST_F(EventTime, IsCutToItsLength) {
    settings.tickDivisor = 1.0;
    text(1);
    EXPECT_EQ(numbers(kMostTicks), "[9223372036854775807][922337203685");
    EXPECT_EQ(numbers(1), "[         1][-9223372036854775806 ");
    EXPECT_EQ(text(kMostTicks).size(), 43U);
}

// Without a time column a decoded line asks for no time text, an unclassified one does.
TEST_F(EventTime, WithoutTimeColumnUnclassifiedLinesCountAndDecodedOnesDoNot) {
    text(5'000'000);
    settings.timeMode = 0;
    capturedOutput([] {
        printEventPrefix({.timestamp = 6'000'000, .thread = 0, .debugid = 0, .cpuid = 0}, {}, 0);
        outputLine.end();
    });
    settings.timeMode = kLocalTime;
    EXPECT_EQ(numbers(7'000'000), "[      7000][      2000 us]");

    settings.timeMode = 0;
    capturedOutput([] {
        const TraceRecord record = recordAt(8'000'000);
        printUnclassifiedRecord(&record);
    });
    settings.timeMode = kLocalTime;
    EXPECT_EQ(numbers(9'000'000), "[      9000][      1000 us]");
}

TEST_F(EventTime, TheBasicLayoutDoesNotCount) {
    text(5'000'000);
    capturedOutput([] {
        const TraceRecord record = recordAt(6'000'000);
        printBasicRecord(&record);
    });
    EXPECT_EQ(numbers(7'000'000), "[      7000][      2000 us]");
}

TEST(ElapsedSeconds, AreWholeSecondsOfTheTraceClock) {
    constexpr struct {
        double divisor;
        uint64_t earlier;
        uint64_t later;
        uint64_t expected;
    } kCases[] = {
        {24.0, 0, 24'000'000, 1},
        {24.0, 0, 23'999'999, 0},
        {24.0, 1'000, 48'000'999, 1},
        {24.0, 1'000, 48'001'000, 2},
        {1000.0, 7, 7, 0},
        // A later stamp that is earlier: the difference has no sign.
        {1000.0, 1'000, 0, 18'446'744'073},
        {0.0, 0, 1, kMostTicks / 1'000'000},
        {0.0, 5, 5, 0},
        {NAN, 0, 1, 0},
    };
    settings = {};
    for (const auto& [divisor, earlier, later, expected] : kCases) {
        settings.tickDivisor = divisor;
        EXPECT_EQ(elapsedSeconds(earlier, later), expected) << divisor << " " << later;
    }
}

}  // namespace
}  // namespace sonaprobe
