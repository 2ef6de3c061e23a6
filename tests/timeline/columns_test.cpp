// Numbers and bytes as the page has them.

#include "scope/timeline/columns.h"

#include <gtest/gtest.h>

namespace sonaprobe::scope::timeline {
namespace {

std::string bytesOf(const Columns& columns) {
    std::string bytes;
    columns.appendTo(bytes);
    return bytes;
}

std::string numberOf(uint64_t number) {
    std::string bytes;
    putNumber(bytes, number);
    return bytes;
}

TEST(Columns, NumbersTakeSevenBitsAByte) {
    EXPECT_EQ(numberOf(0), std::string(1, '\0'));
    EXPECT_EQ(numberOf(0x7F), "\x7F");
    EXPECT_EQ(numberOf(0x80), "\x80\x01");
    EXPECT_EQ(numberOf(UINT64_MAX), "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01");
}

TEST(Columns, SignsGoToTheLowestBit) {
    EXPECT_EQ(zigzag(int64_t{0}), 0U);
    EXPECT_EQ(zigzag(int64_t{-1}), 1U);
    EXPECT_EQ(zigzag(int64_t{1}), 2U);
    EXPECT_EQ(zigzag(INT64_MIN), UINT64_MAX);
    EXPECT_EQ(zigzag(INT32_MIN), UINT32_MAX);
}

TEST(Columns, SmallNumbersAreHeadsAndTheBytesOfOthersStandInPlanes) {
    Columns columns;
    for (const uint64_t number : {uint64_t{7}, uint64_t{247}, uint64_t{248}, uint64_t{0x1234}}) {
        columns.put(number);
    }
    using namespace std::string_literals;
    EXPECT_EQ(bytesOf(columns),
              "\x04\x07\xF7\xF8\xF9"
              "\x02\xF8\x34"
              "\x01\x12"
              "\0\0\0\0\0\0"s);
}

// What a browser makes of the characters: ISO-8859-15, and what HTML does in a script element.
TEST(PageText, HoldsNoCharacterThatAPageChanges) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
    const std::string text = asPageText(all);
    for (const int changed : {0x00, 0x0D, 0x3C, 0xA4, 0xA6, 0xA8, 0xB4, 0xB8, 0xBC, 0xBD, 0xBE}) {
        EXPECT_EQ(text.find(static_cast<char>(changed)), std::string::npos) << changed;
    }
    std::string back;
    for (size_t i = 0; i < text.size(); ++i) {
        back.push_back(text[i] == '=' ? static_cast<char>(text[++i] - 64) : text[i]);
    }
    EXPECT_EQ(back, all);
    EXPECT_EQ(text.size(), all.size() + 12);
}

TEST(Deflated, HasTheHeadOfZlib) {
    const std::string packed = deflated(std::string(1000, 'x'));
    EXPECT_LT(packed.size(), 30U);
    EXPECT_EQ(packed[0], '\x78');
}

}  // namespace
}  // namespace sonaprobe::scope::timeline
