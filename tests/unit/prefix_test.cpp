// The name column's cut, which no name of the decoders is long enough for.

#include "lines/prefix.h"

#include <gtest/gtest.h>
#include <string>

#include "collected_lines.h"

namespace sonaprobe {
namespace {

// A copy of a text that may be copied in blocks.
struct Name {
    explicit Name(std::string_view text) : room(text), length(text.size()) {
        room.resize(length + kTextBlock, '~');
    }
    BlockText text() const { return {room.data(), length}; }

    std::string room;
    size_t length;
};

std::string nameColumn(const std::string& group, const std::string& method,
                       uint32_t showGroup = 1) {
    const Name name(group + "::" + method);
    CollectedLines printed;
    OutputLine line(printed.sink());
    LineState state{
        .options = {.timeMode = 0, .showThread = 0, .showGroup = showGroup, .indent = 0},
        .line = line,
        .names = {}};
    printEventPrefix(state, {}, {name.text(), group.size()}, 0);
    line.end();
    return printed.text.substr(3, printed.text.size() - 4);  // between mark and line end
}

TEST(NameColumn, IsCutAt73Characters) {
    const std::string m40(40, 'm');
    EXPECT_EQ(nameColumn(std::string(31, 'g'), m40), std::string(31, 'g') + "::" + m40 + " ");
    EXPECT_EQ(nameColumn(std::string(32, 'g'), m40),
              std::string(32, 'g') + "::" + m40.substr(1) + " ");
}

TEST(NameColumn, IsCutInGroupAndSeparatorToo) {
    EXPECT_EQ(nameColumn(std::string(71, 'g'), "method"), std::string(71, 'g') + ":: ");
    EXPECT_EQ(nameColumn(std::string(72, 'g'), "method"), std::string(72, 'g') + ": ");
    EXPECT_EQ(nameColumn(std::string(73, 'g'), "method"), std::string(73, 'g') + " ");
    EXPECT_EQ(nameColumn(std::string(200, 'g'), "method"), std::string(73, 'g') + " ");
}

TEST(NameColumn, IsCutWithoutGroupToo) {
    EXPECT_EQ(nameColumn("group", std::string(74, 'm'), 0), std::string(73, 'm') + " ");
}

}  // namespace
}  // namespace sonaprobe
