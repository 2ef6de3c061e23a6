// The reader of printf conversions: which it knows, and what it reads of them.

#include "events/conversion.h"

#include <gtest/gtest.h>

namespace sonaprobe {

// Names the differing conversion when a test fails.
void PrintTo(const Conversion& conversion, std::ostream* out) {
    *out << "kind " << static_cast<int>(conversion.kind) << " wide " << conversion.wide
         << " zeroFill " << conversion.zeroFill << " alternate " << conversion.alternate
         << " width " << static_cast<int>(conversion.width) << " length "
         << static_cast<int>(conversion.length);
}

namespace {

using enum ConversionKind;

bool same(const Conversion& one, const Conversion& two) {
    return one.kind == two.kind && one.wide == two.wide && one.zeroFill == two.zeroFill &&
           one.alternate == two.alternate && one.width == two.width && one.length == two.length;
}

TEST(Conversion, ReadsKindWidthFlagsAndLength) {
    constexpr bool kWide = true;
    constexpr bool kZero = true;
    constexpr bool kAlternate = true;
    constexpr struct {
        const char* text = nullptr;
        Conversion expected;
    } kCases[] = {
        {"%d", {signedDecimal, false, false, false, 0, 2}},
        {"%u", {unsignedDecimal, false, false, false, 0, 2}},
        {"%x", {hexadecimal, false, false, false, 0, 2}},
        {"%p", {pointer, false, false, false, 0, 2}},
        {"%c", {character, false, false, false, 0, 2}},
        {"%s", {string, false, false, false, 0, 2}},
        {"%f", {real, false, false, false, 0, 2}},
        {"%lld", {signedDecimal, kWide, false, false, 0, 4}},
        {"%lluHz", {unsignedDecimal, kWide, false, false, 0, 4}},
        {"%llx]", {hexadecimal, kWide, false, false, 0, 4}},
        {"%03d.", {signedDecimal, false, kZero, false, 3, 4}},
        {"%08x", {hexadecimal, false, kZero, false, 8, 4}},
        {"%08llx", {hexadecimal, kWide, kZero, false, 8, 6}},
        {"%16llx", {hexadecimal, kWide, false, false, 16, 6}},
        {"%#8x", {hexadecimal, false, false, kAlternate, 8, 4}},
        {"%32u", {unsignedDecimal, false, false, false, 32, 4}},
    };
    for (const auto& [text, expected] : kCases) {
        EXPECT_TRUE(same(readConversion(text), expected))
            << text << ": " << testing::PrintToString(readConversion(text));
    }
}

TEST(Conversion, KnowsNoOthers) {
    for (const char* text :
         {"%",   "%%",  "% d", "%-2u", "%+d", "%ld",   "%hd",    "%i",
          "%X",  "%o",  "%e",  "%.1f", "%5f", "%8s",   "%lls",   "%llp",
          "%#p", "%#d", "%#u", "%02c", "%0x", "%0llu", "%33d",   "%999999999999d",
          "%ll", "%l",  "%8",  "%#",   "%*d", "%n",    "%#010x", "%0#10x"}) {
        EXPECT_EQ(readConversion(text).kind, unknown) << text;
    }
}

}  // namespace
}  // namespace sonaprobe
