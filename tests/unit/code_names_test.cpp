// Code names against a plain scan of the file by fgets and strsep, over random files.

#include "lines/code_names.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace sonaprobe {
namespace {

// The scan that the file's format is defined by.
std::optional<std::string> scanFor(uint32_t code, std::FILE* file) {
    std::rewind(file);
    char line[kMaxCodeName + 1];
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

// The names of a file that comes in blocks of random lengths.
CodeNames namesOf(const std::string& text) {
    static std::mt19937 random(1);
    CodeNames names;
    for (size_t begin = 0; begin < text.size();) {
        const size_t length = std::min<size_t>(text.size() - begin, 1 + random() % 100);
        names.take(text.data() + begin, length);
        begin += length;
    }
    names.endFile();
    return names;
}

std::optional<std::string> lookedUp(const CodeNames& names, uint32_t code) {
    const char* const name = names.lookup()(code);
    return name != nullptr ? std::optional<std::string>(name) : std::nullopt;
}

TEST(CodeNames, AreThoseOfAPlainScan) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        std::string text = randomFile(random);
        std::FILE* const file = fmemopen(text.data(), std::max<size_t>(text.size(), 1), "r");
        const CodeNames names = namesOf(text);
        std::vector<uint32_t> codes{0xFFFFFFFF, 0U - 5U};  // "-5" is no 32-bit number
        for (uint32_t code = 0; code <= kCodes; ++code) codes.push_back(code);
        for (const uint32_t code : codes) {
            ASSERT_EQ(lookedUp(names, code), text.empty() ? std::nullopt : scanFor(code, file))
                << "code " << code << " in\n"
                << text;
        }
        std::fclose(file);
    }
}

TEST(CodeNames, ALineOfMoreThan63CharactersIsSeveralLines) {
    EXPECT_EQ(lookedUp(namesOf("0x8 " + std::string(59, 'n') + "0x9 second_piece\n"), 8),
              std::string(59, 'n'));
    EXPECT_EQ(lookedUp(namesOf("0x8 " + std::string(59, 'n') + "0x9 second_piece\n"), 9),
              "second_piece");
    EXPECT_EQ(lookedUp(namesOf("0x8 " + std::string(58, 'n') + "\n0x9 next_line\n"), 8),
              std::string(58, 'n'));
    EXPECT_EQ(lookedUp(namesOf("0x8 " + std::string(58, 'n') + "\n0x9 next_line\n"), 9),
              "next_line");
}

TEST(CodeNames, BlankAndWordyLinesHaveTheCodeZero) {
    EXPECT_EQ(lookedUp(namesOf("0x4 four\n\n# comment\n"), 0), "");
    EXPECT_EQ(lookedUp(namesOf("0x4 four\nwordy line\n"), 0), "line");
    EXPECT_EQ(lookedUp(namesOf("0x4 four\n leading\n"), 0), "leading");
    EXPECT_EQ(lookedUp(namesOf("0x4 four\n"), 0), std::nullopt);
}

TEST(CodeNames, ANameEndsWithItsLineOrTheFile) {
    EXPECT_EQ(lookedUp(namesOf("0x4 last_line_without_end"), 4), "last_line_without_end");
    EXPECT_EQ(lookedUp(namesOf("0x4\n0x8 eight\n"), 4), "");
    EXPECT_EQ(lookedUp(namesOf("0x4\n0x8 eight\n"), 8), "eight");
}

}  // namespace
}  // namespace sonaprobe
