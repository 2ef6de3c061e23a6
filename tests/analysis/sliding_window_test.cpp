// A window holds what came last, however much has gone.

#include "analysis/sliding_window.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <random>

namespace sonaprobe {
namespace {

TEST(SlidingWindow, HoldsWhatAQueueHolds) {
    std::mt19937_64 random(7);
    SlidingWindow<uint64_t> window;
    std::deque<uint64_t> queue;
    for (unsigned round = 0; round < 100; ++round) {
        const uint64_t come = random() % 400;
        for (uint64_t i = 0; i < come; ++i) queue.push_back(window.emplace_back() = random());
        for (uint64_t go = random() % 400; go > 0 && !queue.empty(); --go) {
            ASSERT_EQ(window.front(), queue.front());
            window.pop_front();
            queue.pop_front();
        }
        ASSERT_EQ(window.size(), queue.size());
        ASSERT_EQ(window.empty(), queue.empty());
        ASSERT_TRUE(std::ranges::equal(window.items(), queue));
    }
}

}  // namespace
}  // namespace sonaprobe
