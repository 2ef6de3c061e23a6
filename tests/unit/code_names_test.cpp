// Code-name lookup against a plain scan of the file by fgets and strsep, over random files.

#include "probe/code_names.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "probe/settings.h"

namespace sonaprobe {
namespace {

// The scan that the file's format is defined by.
std::optional<std::string> scanFor(uint32_t code, std::FILE* file) {
    std::rewind(file);
    char line[kCodeNameRoom];
    while (std::fgets(line, sizeof line, file) != nullptr) {
        char* rest = line;
        const char* const token = strsep(&rest, "\t ");
        if (std::strtoul(token, nullptr, 0) != code) continue;
        if (rest == nullptr) return "";
        const size_t length = std::strlen(rest);
        const char* name = rest;
        for (size_t i = 0; i < length; ++i) {
            if (rest[i] == '\n') {
                rest[i] = '\0';
                break;
            }
            if (rest[i] == '\t' || rest[i] == ' ') ++name;
        }
        return name;
    }
    return std::nullopt;
}

constexpr uint32_t kCodes = 24;

// Lines of few different codes, in all spellings, with everything a line should not have.
std::string randomFile(std::mt19937& random) {
    const auto upTo = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
    std::string text;
    for (unsigned lines = upTo(60); lines > 0; --lines) {
        const unsigned code = upTo(kCodes);
        char number[32];
        switch (upTo(7)) {
            case 0: std::snprintf(number, sizeof number, "%u", code); break;
            case 1: std::snprintf(number, sizeof number, "0%o", code); break;
            case 2: std::snprintf(number, sizeof number, "0x1%08x", code); break;  // 33 bits
            case 3: std::snprintf(number, sizeof number, "-%u", code); break;
            case 4: std::snprintf(number, sizeof number, "%ux", code); break;
            case 5: std::snprintf(number, sizeof number, "%s", upTo(1) != 0 ? "" : "word"); break;
            default: std::snprintf(number, sizeof number, "0x%08x", code); break;
        }
        text += number;
        for (unsigned blanks = upTo(4); blanks > 0; --blanks) text += upTo(1) != 0 ? '\t' : ' ';
        for (unsigned letters = upTo(9) == 0 ? upTo(200) : upTo(50); letters > 0; --letters) {
            constexpr char kRare[] = {' ', '\t', '\0', '\r', '\xff', '0', ' ', '7'};
            text += upTo(11) == 0 ? kRare[upTo(7)] : static_cast<char>('a' + upTo(25));
        }
        if (upTo(30) != 0) text += '\n';
    }
    return text;
}

class CodeNames : public testing::Test {
  protected:
    void SetUp() override {
        settings = {};
        settings.decodeFile = std::tmpfile();
    }
    void TearDown() override { std::fclose(settings.decodeFile); }

    // What a lookup has seen of the file holds for 20 ms, by a clock that ticks in several.
    static void rewriteFile(const std::string& text) {
        std::this_thread::sleep_for(std::chrono::milliseconds(35));
        std::FILE* const file = settings.decodeFile;
        std::rewind(file);
        ASSERT_EQ(ftruncate(fileno(file), 0), 0);
        ASSERT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
        ASSERT_EQ(std::fflush(file), 0);
    }

    static std::optional<std::string> lookedUp(uint32_t code) {
        char room[kCodeNameRoom] = {};
        const char* const name = lookupCodeName(code, room);
        return name != nullptr ? std::optional<std::string>(name) : std::nullopt;
    }
};

TEST_F(CodeNames, AreThoseOfAPlainScan) {
    std::mt19937 random(1);
    for (int round = 0; round < 60; ++round) {
        const std::string text = randomFile(random);
        rewriteFile(text);
        for (uint32_t code = 0; code <= kCodes; ++code) {
            ASSERT_EQ(lookedUp(code), scanFor(code, settings.decodeFile))
                << "code " << code << " in\n"
                << text;
        }
        for (const uint32_t code : {0xFFFFFFFFU, 0U - 5U}) {  // "-5" is no 32-bit number
            ASSERT_EQ(lookedUp(code), scanFor(code, settings.decodeFile)) << text;
        }
    }
}

TEST_F(CodeNames, ALineOfMoreThan63CharactersIsSeveralLines) {
    rewriteFile("0x8 " + std::string(59, 'n') + "0x9 second_piece\n");
    EXPECT_EQ(lookedUp(8), std::string(59, 'n'));
    EXPECT_EQ(lookedUp(9), "second_piece");
    rewriteFile("0x8 " + std::string(58, 'n') + "\n0x9 next_line\n");
    EXPECT_EQ(lookedUp(8), std::string(58, 'n'));
    EXPECT_EQ(lookedUp(9), "next_line");
}

TEST_F(CodeNames, BlankAndWordyLinesHaveTheCodeZero) {
    rewriteFile("0x4 four\n\n# comment\n");
    EXPECT_EQ(lookedUp(0), "");
    rewriteFile("0x4 four\nwordy line\n");
    EXPECT_EQ(lookedUp(0), "line");
    rewriteFile("0x4 four\n leading\n");
    EXPECT_EQ(lookedUp(0), "leading");
    rewriteFile("0x4 four\n");
    EXPECT_EQ(lookedUp(0), std::nullopt);
}

TEST_F(CodeNames, ANameEndsWithItsLineOrTheFile) {
    rewriteFile("0x4 last_line_without_end");
    EXPECT_EQ(lookedUp(4), "last_line_without_end");
    rewriteFile("0x4\n0x8 eight\n");
    EXPECT_EQ(lookedUp(4), "");
    EXPECT_EQ(lookedUp(8), "eight");
}

TEST_F(CodeNames, AChangeOfTheFileIsSeen) {
    rewriteFile("0x4 before\n");
    EXPECT_EQ(lookedUp(4), "before");
    rewriteFile("0x8 after\n");
    EXPECT_EQ(lookedUp(4), std::nullopt);
    EXPECT_EQ(lookedUp(8), "after");
}

}  // namespace
}  // namespace sonaprobe
