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
        for (uint64_t i = 0; i < come; ++i) window.push_back(queue.emplace_back(random()));
        const uint64_t go = random() % (std::min<size_t>(queue.size(), 400) + 1);
        window.pop_front(go);
        queue.erase(queue.begin(), queue.begin() + static_cast<std::ptrdiff_t>(go));
        ASSERT_EQ(window.size(), queue.size());
        ASSERT_EQ(window.empty(), queue.empty());
        for (size_t i = 0; i < queue.size(); ++i) ASSERT_EQ(window[i], queue[i]);
        if (!queue.empty()) {
            ASSERT_EQ(window.back(), queue.back());
        }
    }
}

}  // namespace
}  // namespace sonaprobe
