// The registry's entries, and what a class argument names.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include "registry/audio_class_registry.h"

namespace sonaprobe {
namespace {

TEST(AudioClassRegistry, HoldsEachIdOnceInAscendingOrder) {
    const auto entries = AudioClassRegistry::entries();
    EXPECT_EQ(entries.size(), 36U);
    EXPECT_TRUE(
        std::ranges::is_sorted(entries, std::ranges::less_equal{}, &AudioClassRegistry::Entry::id));
}

TEST(AudioClassRegistry, KeepsTheFirstRowOfAnIdThatStandsTwice) {
    const auto entry =
        std::ranges::find(AudioClassRegistry::entries(), 28U, &AudioClassRegistry::Entry::id);
    ASSERT_NE(entry, AudioClassRegistry::entries().end());
    EXPECT_STREQ(entry->name, "kAudioTOrvelHDAEngineOutput");
    EXPECT_EQ(entry->code, 0x6864656fU);  // hdeo
}

TEST(AudioClassRegistry, FindsEveryEntryByCodeNumberAndName) {
    for (const AudioClassRegistry::Entry& entry : AudioClassRegistry::entries()) {
        std::string code;
        for (const unsigned shift : {24U, 16U, 8U, 0U}) {
            code += static_cast<char>(entry.code >> shift & 0xFF);
        }
        EXPECT_EQ(AudioClassRegistry::ResolveClassArgument(code.c_str()), entry.id) << code;
        EXPECT_EQ(AudioClassRegistry::ResolveClassArgument(std::to_string(entry.id).c_str()),
                  entry.id);
        EXPECT_EQ(AudioClassRegistry::ResolveClassArgument(entry.name), entry.id) << entry.name;
    }
}

TEST(ResolveClassArgument, AnswersAsTheTableSays) {
    constexpr struct {
        const char* text;
        uint32_t expected;
    } kCases[] = {
        {"hdac", 20},
        {"kAudioTOrvelHDAController", 20},
        {"20", 20},
        {"piml", 44},
        // Case counts.
        {"usbd", 35},
        {"usbD", 36},
        {"HDAC", kUnresolvedClass},
        {"kaudiotorvelhdacontroller", kUnresolvedClass},
        // The second row of id 28 is not in the registry.
        {"hddp", kUnresolvedClass},
        {"kAudioTOrvelHDAEngineOutputDP", kUnresolvedClass},
        // Digits: base 0, so a leading 0 is octal, and 32 bits.
        {"7", 7},
        {"010", 8},
        {"020", 16},
        {"042", 34},
        {"08", 0},
        {"99", 99},
        {"00000020", 16},
        {"4294967295", 0xFFFFFFFF},
        {"4294967299", 3},
        {"99999999999999999999999", 0xFFFFFFFF},
        // Four characters are never a number.
        {"0020", kUnresolvedClass},
        {"1234", kUnresolvedClass},
        {"", 0},
        // Not all digits: names only.
        {"12x", kUnresolvedClass},
        {"0x12a", kUnresolvedClass},
        {"0x1", kUnresolvedClass},
        {"-1", kUnresolvedClass},
        {"+1", kUnresolvedClass},
        {" 7", kUnresolvedClass},
        {"7 ", kUnresolvedClass},
        {"nosuch", kUnresolvedClass},
        {"kAudioTOrvelHDAControllerX", kUnresolvedClass},
        {"kAudioTOrvelHDAControlle", kUnresolvedClass},
        {"hda", kUnresolvedClass},
        {"hdac ", kUnresolvedClass},
        // A byte of 0x80 and above is no digit.
        {"\xb2", kUnresolvedClass},
        {"1\xb2", kUnresolvedClass},
    };
    for (const auto& [text, expected] : kCases) {
        EXPECT_EQ(AudioClassRegistry::ResolveClassArgument(text), expected) << '"' << text << '"';
    }
}

// As signed bytes, characters 2 to 4 set all bits above them, which no code has.
TEST(ResolveClassArgument, AByteBeyondAsciiNamesNoCodeWhereverItStands) {
    for (const AudioClassRegistry::Entry& entry : AudioClassRegistry::entries()) {
        for (const unsigned shift : {24U, 16U, 8U, 0U}) {
            std::string code;
            for (const unsigned at : {24U, 16U, 8U, 0U}) {
                const uint32_t byte = entry.code >> at & 0xFF;
                code += static_cast<char>(at == shift ? byte | 0x80 : byte);
            }
            EXPECT_EQ(AudioClassRegistry::ResolveClassArgument(code.c_str()), kUnresolvedClass);
        }
    }
    EXPECT_EQ(AudioClassRegistry::ResolveClassArgument("\x80\x80\x80\x80"), kUnresolvedClass);
}

}  // namespace
}  // namespace sonaprobe
