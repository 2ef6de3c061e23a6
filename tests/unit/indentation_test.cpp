// The indentation depth: how it moves, and where it stops.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "captured_output.h"

// The depth's limit is out of reach for calls alone, each of which prints the depth in blanks, so
// the test sets the counter itself.
#include "lines/indentation.cpp"  // NOLINT(bugprone-suspicious-include)

namespace sonaprobe {
namespace {

class Indentation : public testing::Test {
  protected:
    void SetUp() override { resetIndentation(); }

    template <typename Action>
    static size_t blanksOf(Action action) {
        const std::string line = capturedOutput([&] {
            action();
            outputLine.end();
        });
        EXPECT_EQ(line, std::string(line.size() - 1, ' ') + '\n');
        return line.size() - 1;
    }
};

TEST_F(Indentation, FollowsStartsAndEnds) {
    EXPECT_EQ(blanksOf(indentIn), 0U);
    EXPECT_EQ(blanksOf(indentIn), 1U);
    EXPECT_EQ(blanksOf(indentPad), 2U);
    EXPECT_EQ(blanksOf(indentPad), 2U);
    EXPECT_EQ(blanksOf(indentOut), 1U);
    EXPECT_EQ(blanksOf(indentOut), 0U);
}

TEST_F(Indentation, StaysAtZero) {
    EXPECT_EQ(blanksOf(indentOut), 0U);
    EXPECT_EQ(blanksOf(indentOut), 0U);
    EXPECT_EQ(blanksOf(indentIn), 0U);
    EXPECT_EQ(blanksOf(indentPad), 1U);
}

TEST_F(Indentation, IsForgottenOnReset) {
    for (int i = 0; i < 5; ++i) blanksOf(indentIn);
    resetIndentation();
    EXPECT_EQ(blanksOf(indentPad), 0U);
}

// Two billion blanks go to /dev/null in pieces.
TEST_F(Indentation, StaysAtItsLimit) {
    const int saved = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    depth = std::numeric_limits<int32_t>::max() - 1;
    indentIn();
    EXPECT_EQ(depth, std::numeric_limits<int32_t>::max());
    indentIn();
    EXPECT_EQ(depth, std::numeric_limits<int32_t>::max());
    indentOut();
    EXPECT_EQ(depth, std::numeric_limits<int32_t>::max() - 1);
    outputLine.end();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    close(nowhere);
}

}  // namespace
}  // namespace sonaprobe
