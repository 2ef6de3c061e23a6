// Which records of a long trace the page leaves out.

#include "scope/timeline/thinning.h"

#include <gtest/gtest.h>

namespace sonaprobe::scope::timeline {
namespace {

TEST(Thinning, RecordsThatAFileGrewByMeanwhileAreKept) {
    const Thinning thinning{.isMerged = {false, true}};
    EXPECT_FALSE(thinning.merges(0));
    EXPECT_TRUE(thinning.merges(1));
    EXPECT_FALSE(thinning.merges(128));
    EXPECT_FALSE(Thinning{}.merges(0));
}

}  // namespace
}  // namespace sonaprobe::scope::timeline
