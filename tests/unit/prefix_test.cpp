// The name column's cut, which no name of the decoders is long enough for.

#include "lines/prefix.h"

#include <gtest/gtest.h>
#include <string>

#include "captured_output.h"
#include "lines/output_line.h"
#include "probe/settings.h"

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

std::string nameColumn(const std::string& group, const std::string& method) {
    settings.timeMode = 0;
    settings.showThread = 0;
    settings.indent = 0;
    const Name name(group + "::" + method);
    const std::string line = capturedOutput([&] {
        EXPECT_TRUE(printEventPrefix({}, {name.text(), group.size()}, 0));
        outputLine.end();
    });
    return line.substr(3, line.size() - 4);  // between mark and line end
}

TEST(NameColumn, IsCutAt73Characters) {
    settings = {};
    const std::string m40(40, 'm');
    EXPECT_EQ(nameColumn(std::string(31, 'g'), m40), std::string(31, 'g') + "::" + m40 + " ");
    EXPECT_EQ(nameColumn(std::string(32, 'g'), m40),
              std::string(32, 'g') + "::" + m40.substr(1) + " ");
}

TEST(NameColumn, IsCutInGroupAndSeparatorToo) {
    settings = {};
    EXPECT_EQ(nameColumn(std::string(71, 'g'), "method"), std::string(71, 'g') + ":: ");
    EXPECT_EQ(nameColumn(std::string(72, 'g'), "method"), std::string(72, 'g') + ": ");
    EXPECT_EQ(nameColumn(std::string(73, 'g'), "method"), std::string(73, 'g') + " ");
    EXPECT_EQ(nameColumn(std::string(200, 'g'), "method"), std::string(73, 'g') + " ");
}

TEST(NameColumn, IsCutWithoutGroupToo) {
    settings = {};
    settings.showGroup = 0;
    EXPECT_EQ(nameColumn("group", std::string(74, 'm')), std::string(73, 'm') + " ");
}

}  // namespace
}  // namespace sonaprobe
