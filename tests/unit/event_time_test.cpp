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

#include "collected_lines.h"
#include "events/log_text.h"
#include "lines/prefix.h"
#include "lines/unclassified.h"

namespace sonaprobe {
namespace {

constexpr uint64_t kMostTicks = std::numeric_limits<uint64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class TimeText : public testing::Test {
  protected:
    std::string text(uint64_t timestamp) {
        char room[kEventTimeRoom];
        return std::string(state.time.formatEventTime(timestamp, state.options.timeMode,
                                                      state.ticksPerMicrosecond, room));
    }
    static TraceRecord recordAt(uint64_t timestamp) {
        TraceRecord record{};
        record.timestamp = timestamp;
        record.debugid = 0x05243014;  // of a class without decoder
        return record;
    }

    // Without the eight characters of the wall clock and the blank after them.
    std::string numbers(uint64_t timestamp) { return text(timestamp).substr(9); }

    void forgetLastStamp() { state.time = {}; }

    CollectedLines printed;
    OutputLine line{printed.sink()};
    LineState state{.options = {}, .line = line, .names = {}};
};

TEST_F(TimeText, TheFirstDeltaIsZeroAndEachOtherOneCountsFromTheLast) {
    state.ticksPerMicrosecond = 24.0;
    EXPECT_EQ(numbers(24'000'000), "[   1000000][         0 us]");
    EXPECT_EQ(numbers(24'000'240), "[   1000010][        10 us]");
    EXPECT_EQ(numbers(24'000'000), "[   1000000][       -10 us]");
}

// Near stamps share most of their text; each must come out as if it stood alone.
TEST_F(TimeText, WalksOfNearAndFarStampsAreThoseOfPrintf) {
    constexpr uint64_t kStarts[] = {1, 9'998, 10'000, 99'990'000, 9'999'989'990, 10'000'000'000};
    std::mt19937 random(1);
    for (const uint64_t start : kStarts) {
        forgetLastStamp();
        state.ticksPerMicrosecond = 1.0;
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

TEST_F(TimeText, EveryCallCountsWhateverFormIsPrinted) {
    for (const uint32_t mode : {0U, kKernelTime, kLocalTime, kKernelTime | kLocalTime}) {
        state.options.timeMode = mode;
        text(5'000'000);
        state.options.timeMode = kLocalTime;
        EXPECT_EQ(numbers(6'000'000), "[      6000][      1000 us]") << mode;
    }
}

TEST_F(TimeText, ModeZeroWritesNothing) {
    char room[kEventTimeRoom] = "as it was";
    EXPECT_EQ(state.time.formatEventTime(5'000'000, 0, 1000.0, room), "");
    EXPECT_STREQ(room, "as it was");
}

TEST_F(TimeText, TheLocalFormWinsOverTheKernelForm) {
    state.options.timeMode = kKernelTime | kLocalTime;
    EXPECT_EQ(numbers(5'000'000), "[      5000][         0 us]");
}

TEST_F(TimeText, TheClockIsThatOfPrinting) {
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

TEST_F(TimeText, TheKernelFormDropsMinutesAndShowsNoSeparator) {
    state.options.timeMode = kKernelTime;
    EXPECT_EQ(text(61'234'567'000), "01234.567");
    EXPECT_EQ(text(12'345'678'000), "12345.678");
    EXPECT_EQ(text(0), "00000.000");
}

TEST_F(TimeText, StaysDefinedBeyondTheArithmetic) {
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
        forgetLastStamp();
        state.ticksPerMicrosecond = divisor;
        state.options.timeMode = kLocalTime;
        EXPECT_EQ(numbers(timestamp), local) << divisor;
        state.options.timeMode = kKernelTime;
        EXPECT_EQ(text(timestamp), kernel) << divisor;
    }
}

TEST_F(TimeText, IsCutToItsLength) {
    state.ticksPerMicrosecond = 1.0;
    text(1);
    EXPECT_EQ(numbers(kMostTicks), "[9223372036854775807][922337203685");
    EXPECT_EQ(numbers(1), "[         1][-9223372036854775806 ");
    EXPECT_EQ(text(kMostTicks).size(), 43U);
}

// Without a time column a decoded line asks for no time text, an unclassified one does.
TEST_F(TimeText, WithoutTimeColumnUnclassifiedLinesCountAndDecodedOnesDoNot) {
    text(5'000'000);
    state.options.timeMode = 0;
    printEventPrefix(state, headerOf(recordAt(6'000'000)), {}, 0);
    state.options.timeMode = kLocalTime;
    EXPECT_EQ(numbers(7'000'000), "[      7000][      2000 us]");

    state.options.timeMode = 0;
    printUnclassifiedRecord(state, recordAt(8'000'000));
    state.options.timeMode = kLocalTime;
    EXPECT_EQ(numbers(9'000'000), "[      9000][      1000 us]");
}

TEST_F(TimeText, TheBasicLayoutDoesNotCount) {
    text(5'000'000);
    printBasicRecord(state, recordAt(6'000'000));
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
    for (const auto& [divisor, earlier, later, expected] : kCases) {
        EXPECT_EQ(elapsedSeconds(earlier, later, divisor), expected) << divisor << " " << later;
    }
}

}  // namespace
}  // namespace sonaprobe
