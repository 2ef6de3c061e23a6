// The output line: text and blanks come out as they went in, however many; lines leave whole.

#include "lines/output_line.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "captured_output.h"
#include "events/number_text.h"

namespace sonaprobe {
namespace {

void put(OutputLine& line, std::string_view text) { line.moveTo(putText(line.cursor(), text)); }

TEST(OutputLine, PrintsRandomTextsAndBlanksUnchanged) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        std::string expected;
        const std::string printed = capturedOutput([&] {
            OutputLine line;
            if (round % 2 != 0) line.gather();
            for (int lines = 0; lines < 5; ++lines) {
                const std::string before(random() % 300, 'b');
                const std::string after(random() % 3000, 'a');
                const size_t blanks = random() % 2 != 0 ? random() % 150'000 : random() % 40;
                put(line, before);
                line.blanks(blanks);
                put(line, after);
                line.end();
                expected.append(before).append(blanks, ' ').append(after) += '\n';
            }
            line.handOver();
        });
        ASSERT_EQ(printed, expected);
    }
}

TEST(OutputLine, HoldsEveryNumberOfBlanksAroundItsRoom) {
    for (const uint64_t room : {4096U, 65'536U, 69'632U, 139'264U}) {
        for (uint64_t blanks = room - 16; blanks <= room + 16; ++blanks) {
            const std::string printed = capturedOutput([&] {
                OutputLine line;
                put(line, "->");
                line.blanks(blanks);
                put(line, "text");
                line.end();
            });
            ASSERT_EQ(printed, "->" + std::string(blanks, ' ') + "text\n");
        }
    }
}

TEST(OutputLine, GathersWholeLinesAndKeepsTheirOrder) {
    OutputLine line;
    line.gather();
    const std::string text(3999, 't');
    std::string lines;
    for (int i = 0; i < 16; ++i) lines += text + '\n';
    const auto printLines = [&](int count) {
        for (int i = 0; i < count; ++i) {
            put(line, text);
            line.end();
        }
    };
    EXPECT_EQ(capturedOutput([&] { printLines(16); }), "");
    EXPECT_EQ(capturedOutput([&] { line.handOver(); }), lines);
    EXPECT_EQ(capturedOutput([&] { printLines(18); }), lines + text + '\n');
    EXPECT_EQ(capturedOutput([&] { line.handOver(); }), text + '\n');
    EXPECT_EQ(capturedOutput([&] { line.handOver(); }), "");
}

TEST(OutputLine, PrintsNothingBeforeItsEnd) {
    OutputLine line;
    const std::string before = capturedOutput([&] { put(line, "text"); });
    EXPECT_EQ(before, "");
    EXPECT_EQ(capturedOutput([&] { line.end(); }), "text\n");
}

}  // namespace
}  // namespace sonaprobe
