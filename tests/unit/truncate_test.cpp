// Doubles to integers: toward zero, held at the limits, 0 for what is no number.

#include "record/truncate.h"

#include <gtest/gtest.h>
#include <limits>

namespace sonaprobe {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();
constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
constexpr uint64_t kMostUnsigned = std::numeric_limits<uint64_t>::max();

TEST(Truncate, ToSigned) {
    constexpr struct {
        double value;
        int64_t expected;
    } kCases[] = {
        {0.0, 0},
        {-0.0, 0},
        {0.999, 0},
        {-0.999, 0},
        {41.5, 41},
        {-41.5, -41},
        {0x1p62, int64_t{1} << 62},
        {0x1.fffffffffffffp62, 0x7ffffffffffffc00},  // the largest double that fits
        {0x1p63, kMost},
        {0x1p64, kMost},
        {1e300, kMost},
        {kInfinity, kMost},
        {-0x1p63, kLeast},
        {-0x1.0000000000001p63, kLeast},
        {-kInfinity, kLeast},
        {kNoNumber, 0},
    };
    for (const auto& [value, expected] : kCases) {
        EXPECT_EQ(truncateToSigned(value), expected) << value;
    }
}

TEST(Truncate, ToUnsigned) {
    constexpr struct {
        double value;
        uint64_t expected;
    } kCases[] = {
        {0.0, 0},
        {0.999, 0},
        {41.5, 41},
        {0x1p63, uint64_t{1} << 63},
        {0x1.fffffffffffffp63, 0xfffffffffffff800},  // the largest double that fits
        {0x1p64, kMostUnsigned},
        {kInfinity, kMostUnsigned},
        {-0.5, 0},
        {-1.0, 0},
        {-kInfinity, 0},
        {kNoNumber, 0},
    };
    for (const auto& [value, expected] : kCases) {
        EXPECT_EQ(truncateToUnsigned(value), expected) << value;
    }
}

}  // namespace
}  // namespace sonaprobe
