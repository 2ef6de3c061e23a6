// Threads keep the numbers of their first records.

#include "analysis/trace_clock.h"

#include <gtest/gtest.h>
#include <random>
#include <unordered_map>

namespace sonaprobe {
namespace {

TEST(TraceClock, NumbersThreadsAsTheyAppear) {
    std::mt19937_64 random(4);
    std::vector<uint64_t> ids(3000);  // more than are remembered at once
    for (size_t n = 0; n < ids.size(); ++n) ids[n] = n < 300 ? n : random();
    TraceClock clock;
    std::unordered_map<uint64_t, uint32_t> numbers;
    for (int n = 0; n < 50'000; ++n) {
        TraceRecord record{};
        record.arg5 = ids[random() % ids.size()];
        const auto number = static_cast<uint32_t>(numbers.size());
        const uint32_t expected = numbers.try_emplace(record.arg5, number).first->second;
        ASSERT_EQ(clock.read(record).thread, expected);
        ASSERT_EQ(clock.threadId(expected), record.arg5);
    }
    EXPECT_EQ(clock.threads(), numbers.size());
}

}  // namespace
}  // namespace sonaprobe
