// The output line: text and blanks come out as they went in, however many; lines leave whole.

#include "lines/output_line.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

#include "collected_lines.h"
#include "events/number_text.h"

namespace sonaprobe {
namespace {

void put(OutputLine& line, std::string_view text) { line.moveTo(putText(line.cursor(), text)); }

TEST(OutputLine, PrintsRandomTextsAndBlanksUnchanged) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        std::string expected;
        CollectedLines printed;
        OutputLine line(printed.sink());
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
        ASSERT_EQ(printed.text, expected);
    }
}

TEST(OutputLine, HoldsEveryNumberOfBlanksAroundItsRoom) {
    for (const uint64_t room :
         {4096UL, OutputLine::kGathered, OutputLine::kFillRoom, 2 * OutputLine::kFillRoom}) {
        for (uint64_t blanks = room - 16; blanks <= room + 16; ++blanks) {
            CollectedLines printed;
            OutputLine line(printed.sink());
            put(line, "->");
            line.blanks(blanks);
            put(line, "text");
            line.end();
            ASSERT_EQ(printed.text, "->" + std::string(blanks, ' ') + "text\n");
        }
    }
}

TEST(OutputLine, GathersWholeLinesAndKeepsTheirOrder) {
    CollectedLines printed;
    OutputLine line(printed.sink());
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
    printLines(16);
    EXPECT_EQ(printed.take(), "");
    line.handOver();
    EXPECT_EQ(printed.take(), lines);
    printLines(18);
    EXPECT_EQ(printed.take(), lines + text + '\n');
    line.handOver();
    EXPECT_EQ(printed.take(), text + '\n');
    line.handOver();
    EXPECT_EQ(printed.take(), "");
}

TEST(OutputLine, PrintsNothingBeforeItsEnd) {
    CollectedLines printed;
    OutputLine line(printed.sink());
    put(line, "text");
    EXPECT_EQ(printed.text, "");
    line.end();
    EXPECT_EQ(printed.text, "text\n");
}

}  // namespace
}  // namespace sonaprobe
