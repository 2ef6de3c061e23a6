// Work handed to another thread: in order, no more waiting than may, failures handed back.

#include "scope/timeline/worker.h"

#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace sonaprobe::scope::timeline {
namespace {

TEST(Worker, DoesAllThatItIsGivenInOrder) {
    Worker worker(3);
    std::vector<int> done;
    std::vector<int> all;
    for (int i = 0; i < 1000; ++i) {
        worker.give([&done, i] { done.push_back(i); });
        all.push_back(i);
    }
    worker.finish();
    EXPECT_EQ(done, all);
}

TEST(Worker, LetsNoMoreWaitThanItMay) {
    Worker worker(2);
    std::atomic<int> begun = 0;
    for (int given = 0; given < 100; ++given) {
        worker.give([&] { ++begun; });
        EXPECT_LE(given + 1 - begun, 3);  // two that wait, and one that has been taken
    }
}

TEST(Worker, HandsBackWhatItsWorkThrows) {
    Worker worker(2);
    bool done = false;
    worker.give([] { throw std::runtime_error("no room"); });
    EXPECT_THROW(worker.finish(), std::runtime_error);
    EXPECT_THROW(worker.give([&] { done = true; }), std::runtime_error);
    EXPECT_FALSE(done);
}

}  // namespace
}  // namespace sonaprobe::scope::timeline
