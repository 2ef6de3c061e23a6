// How texts give way to a narrow terminal.

#include "scope/table.h"

#include <gtest/gtest.h>

namespace sonaprobe::scope {
namespace {

TEST(Fitted, CutsTheGroupAndKeepsTheMethodWhole) {
    const std::string name = "OrvelHDADriver::performPowerStateChange";
    EXPECT_EQ(fitted(name, 39), name);
    EXPECT_EQ(fitted(name, 31), "Orvel…::performPowerStateChange");
    EXPECT_EQ(fitted(name, 26), "…::performPowerStateChange");
    EXPECT_EQ(fitted("no method here", 8), "no meth…");
}

TEST(Fitted, CountsCharactersNotBytes) {
    EXPECT_EQ(columnsOf("412 µs"), 6U);
    EXPECT_EQ(fitted("412 µs", 6), "412 µs");
    EXPECT_EQ(fitted("µµµµ", 3), "µµ…");
    EXPECT_EQ(firstColumns("µs", 1), "µ");
    EXPECT_EQ(firstColumns("µs", 5), "µs");
}

}  // namespace
}  // namespace sonaprobe::scope
