// Numbers as text: what printf makes of the same values.

#include "events/number_text.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace sonaprobe {
namespace {

// What a function writes; beyond the slack that it may use everything stays as it was.
template <typename Put>
std::string written(Put put) {
    constexpr char kUntouched = '~';
    char room[kMaxNumberLength + kDigitSlack + 8];
    std::ranges::fill(room, kUntouched);
    const char* const end = put(room);
    EXPECT_LE(end - room, static_cast<std::ptrdiff_t>(kMaxNumberLength));
    EXPECT_TRUE(
        std::all_of(end + kDigitSlack, std::cend(room), [](char c) { return c == kUntouched; }));
    return {room, static_cast<size_t>(end - room)};
}

template <typename... Values>
std::string printed(const char* format, Values... values) {
    char room[128];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(room, sizeof room, format, values...);
#pragma GCC diagnostic pop
    return {room, static_cast<size_t>(length)};
}

constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();

// Around each power of two and of ten, and random values of every length.
std::vector<uint64_t> values() {
    std::vector<uint64_t> list;
    const auto around = [&](uint64_t value) {
        for (const uint64_t near : {value - 1, value, value + 1, 0 - value}) list.push_back(near);
    };
    for (unsigned bit = 0; bit < 64; ++bit) around(uint64_t{1} << bit);
    for (uint64_t power = 1; power != 0; power = power <= kMost / 10 ? power * 10 : 0)
        around(power);
    // Every group of four digits, in both halves of eight.
    for (uint64_t four = 0; four < 10'000; ++four) list.push_back(four * 10'000 + (9'999 - four));
    std::mt19937_64 random(1);
    for (int i = 0; i < 2000; ++i) list.push_back(random() >> (random() & 63));
    return list;
}

constexpr int kWidths[] = {0, 1, 2, 3, 8, 10, 16, 20, 21, 32};

TEST(Digits, DecimalsAreThoseOfPrintf) {
    for (const uint64_t value : values()) {
        ASSERT_EQ(written([&](char* at) { return putUnsigned(at, value); }),
                  printed("%" PRIu64, value));
        ASSERT_EQ(written([&](char* at) { return putSigned(at, static_cast<int64_t>(value)); }),
                  printed("%" PRId64, value));
        for (const int width : kWidths) {
            const auto columns = static_cast<unsigned>(width);
            const auto number = static_cast<int64_t>(value);
            ASSERT_EQ(written([&](char* at) { return putUnsigned(at, value, columns); }),
                      printed("%*" PRIu64, width, value));
            ASSERT_EQ(written([&](char* at) { return putUnsignedZeroFilled(at, value, columns); }),
                      printed("%0*" PRIu64, width, value));
            ASSERT_EQ(written([&](char* at) { return putSigned(at, number, columns); }),
                      printed("%*" PRId64, width, number));
            ASSERT_EQ(written([&](char* at) { return putSignedZeroFilled(at, number, columns); }),
                      printed("%0*" PRId64, width, number));
        }
    }
}

TEST(Digits, HexadecimalsAreThoseOfPrintf) {
    for (const uint64_t value : values()) {
        ASSERT_EQ(written([&](char* at) { return putHex(at, value); }), printed("%" PRIx64, value));
        for (const int width : kWidths) {
            const auto columns = static_cast<unsigned>(width);
            ASSERT_EQ(written([&](char* at) { return putHex(at, value, columns); }),
                      printed("%*" PRIx64, width, value));
            ASSERT_EQ(written([&](char* at) { return putHexZeroFilled(at, value, columns); }),
                      printed("%0*" PRIx64, width, value));
        }
    }
}

TEST(Digits, AFixedCountTakesTheLowestDigits) {
    for (const uint64_t value : values()) {
        for (unsigned count = 1; count <= 16; ++count) {
            const std::string all = printed("%016" PRIx64, value);
            ASSERT_EQ(written([&](char* at) { return putHexDigits(at, value, count); }),
                      all.substr(16 - count));
        }
    }
}

TEST(Digits, TwoOrThreeDigitsAreFilledWithZeros) {
    for (unsigned value = 0; value < 100; ++value) {
        ASSERT_EQ(written([&](char* at) { return putTwoDigits(at, value); }),
                  printed("%02u", value));
    }
    for (unsigned value = 0; value < 1000; ++value) {
        ASSERT_EQ(written([&](char* at) { return putThreeDigits(at, value); }),
                  printed("%03u", value));
    }
}

TEST(Digits, APointerHasAPrefixAndZeroTooAndIsNeverNil) {
    const auto pointer = [](uint64_t value) {
        return written([&](char* at) { return putPointer(at, value); });
    };
    EXPECT_EQ(pointer(0), "0x0");
    EXPECT_EQ(pointer(0x10), "0x10");
    EXPECT_EQ(pointer(0xffffff8012345678), "0xffffff8012345678");
}

TEST(Digits, ATextIsCopiedWhateverItsLength) {
    std::string text;
    for (size_t length = 0; length < 300; ++length) {
        std::string room(length + 8, '~');
        EXPECT_EQ(putText(room.data(), text), room.data() + length);
        EXPECT_EQ(room, text + "~~~~~~~~");
        text += static_cast<char>('!' + length % 90);
    }
}

TEST(Digits, RealsAreThoseOfPrintf) {
    for (const uint64_t value : values()) {
        for (const double divisor : {2.0, 24.0, 1000.0}) {
            const double number = static_cast<double>(value) / divisor;
            ASSERT_EQ(written([&](char* at) { return putReal(at, number, 1, 10); }),
                      printed("%10.1f", number));
            ASSERT_EQ(written([&](char* at) { return putReal(at, number, 1, 5); }),
                      printed("%5.1f", number));
            ASSERT_EQ(written([&](char* at) { return putReal(at, number, 6); }),
                      printed("%f", number));
        }
    }
}

// What the basic layout prints of stamps a few ticks apart, all of them.
TEST(Digits, TenthsOfShortTimesAreThoseOfPrintf) {
    for (unsigned ticks = 0; ticks < 200'000; ++ticks) {
        const double number = ticks / 1000.0;
        ASSERT_EQ(written([&](char* at) { return putReal(at, number, 1, 5); }),
                  printed("%5.1f", number));
    }
}

// Halves are exact in binary: the last digit goes to the even one.
TEST(Digits, RealsRoundHalvesToEven) {
    const auto tenths = [](double value) {
        return written([&](char* at) { return putReal(at, value, 1); });
    };
    EXPECT_EQ(tenths(0.25), "0.2");
    EXPECT_EQ(tenths(0.75), "0.8");
    EXPECT_EQ(tenths(0.05), "0.1");
    EXPECT_EQ(tenths(0.95), "0.9");
    EXPECT_EQ(tenths(9.95), "9.9");
    EXPECT_EQ(tenths(9.96), "10.0");
    EXPECT_EQ(tenths(0x1p51 + 0.5), "2251799813685248.5");
}

}  // namespace
}  // namespace sonaprobe
