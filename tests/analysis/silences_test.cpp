// The longest silences against a plain list of all.

#include "analysis/silences.h"

#include <gtest/gtest.h>
#include <random>

namespace sonaprobe {
namespace {

TEST(Silences, AreThoseOfAPlainList) {
    std::mt19937 random(9);
    Silences silences;
    std::vector<Silence> all;
    Nanoseconds time = 0;
    for (uint64_t slot = 1; slot < 5000; ++slot) {
        // Of few lengths, so that many are alike, and some too short to count.
        const Nanoseconds length = 10'000 * static_cast<Nanoseconds>(random() % 50);
        time += length;
        silences.take(slot, time);
        if (length >= 20'000) all.push_back({slot - 1, slot, length});
        if (slot % 97 != 0) continue;

        const uint64_t since = random() % (slot + 10);
        const Silence* expected = nullptr;
        for (const Silence& silence : all) {
            const bool isLonger = expected == nullptr || silence.length >= expected->length;
            if (silence.after >= since && isLonger) expected = &silence;
        }
        const Silence* const told = silences.longestSince(since);
        ASSERT_EQ(told == nullptr, expected == nullptr) << slot << " since " << since;
        if (told == nullptr) continue;
        EXPECT_EQ(told->after, expected->after) << slot << " since " << since;
        EXPECT_EQ(told->length, expected->length);
    }
}

// Where each is shorter than the one before, all would be kept.
TEST(Silences, OfManyThatFallTheNewestAreKept) {
    Silences silences;
    constexpr uint64_t kCount = 20'000;
    Nanoseconds time = 0;
    for (uint64_t slot = 1; slot <= kCount; ++slot) {
        time += static_cast<Nanoseconds>(20'000 + kCount - slot);
        silences.take(slot, time);
    }
    for (const uint64_t since : {kCount - 1, kCount - 4000}) {
        const Silence* const told = silences.longestSince(since);
        ASSERT_NE(told, nullptr);
        EXPECT_EQ(told->after, since);
    }
}

}  // namespace
}  // namespace sonaprobe
