// The indentation depth: how it moves, and where it stops.

#include "lines/indentation.h"

#include <gtest/gtest.h>

namespace sonaprobe {
namespace {

TEST(Indentation, FollowsStartsAndEnds) {
    Indentation depth;
    EXPECT_EQ(depth.in(), 0U);
    EXPECT_EQ(depth.in(), 1U);
    EXPECT_EQ(depth.pad(), 2U);
    EXPECT_EQ(depth.pad(), 2U);
    EXPECT_EQ(depth.out(), 1U);
    EXPECT_EQ(depth.out(), 0U);
}

TEST(Indentation, StaysAtZero) {
    Indentation depth;
    EXPECT_EQ(depth.out(), 0U);
    EXPECT_EQ(depth.out(), 0U);
    EXPECT_EQ(depth.in(), 0U);
    EXPECT_EQ(depth.pad(), 1U);
}

TEST(Indentation, StaysAtItsLimit) {
    Indentation depth(Indentation::kMaxDepth - 1);
    EXPECT_EQ(depth.in(), Indentation::kMaxDepth - 1);
    EXPECT_EQ(depth.in(), Indentation::kMaxDepth);
    EXPECT_EQ(depth.in(), Indentation::kMaxDepth);
    EXPECT_EQ(depth.out(), Indentation::kMaxDepth - 1);
}

}  // namespace
}  // namespace sonaprobe
