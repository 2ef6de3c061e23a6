// Which names are offered where one fits nothing.

#include "analysis/nearest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sonaprobe {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kNames[] = {"enable", "enableOutput", "disable", "setPathFormat", ""};

TEST(NearestNames, HoldTheGivenOneOrDifferInFewLetters) {
    EXPECT_THAT(nearestNames("enabel", kNames), ElementsAre("enable"));
    EXPECT_THAT(nearestNames("Enable", kNames), ElementsAre("enable", "enableOutput"));
    EXPECT_THAT(nearestNames("pathformat", kNames), ElementsAre("setPathFormat"));
    EXPECT_THAT(nearestNames("enable", kNames, 1), ElementsAre("enable"));
}

TEST(NearestNames, AreNoneWhereNothingIsNear) {
    EXPECT_THAT(nearestNames("zzz", kNames), IsEmpty());
    EXPECT_EQ(nearestPhrase("zzz", kNames), "");
}

TEST(NearestNames, ArePutIntoWords) {
    EXPECT_EQ(nearestPhrase("enabel", kNames), "; the nearest is 'enable'");
    EXPECT_EQ(nearestPhrase("able", kNames),
              "; the nearest are 'enable', 'disable' and 'enableOutput'");
}

}  // namespace
}  // namespace sonaprobe
