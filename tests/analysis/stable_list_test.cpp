// Items of a growing list stay where they are, and are found by place and by field.

#include "analysis/stable_list.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace sonaprobe {
namespace {

struct Item {
    size_t place;
    size_t half;
};

TEST(StableList, HoldsWhatAVectorHoldsAndMovesNothing) {
    StableList<Item> list;
    std::vector<const Item*> addresses;
    EXPECT_TRUE(list.empty());
    for (size_t i = 0; i < 5000; ++i) {
        addresses.push_back(&list.push_back({i, i / 2}));
        ASSERT_EQ(list.back().place, i);
        ASSERT_EQ(list.size(), i + 1);
    }
    for (size_t i = 0; i < addresses.size(); ++i) {
        ASSERT_EQ(&list[i], addresses[i]);
        ASSERT_EQ(list[i].place, i);
    }
    size_t visited = 0;
    list.forEach([&](const Item& item) { ASSERT_EQ(&item, addresses[visited++]); });
    EXPECT_EQ(visited, list.size());
}

TEST(StableList, CountsUpToAValue) {
    for (const size_t size : {0U, 1U, 4U, 5U, 1000U}) {
        StableList<Item> list;
        for (size_t i = 0; i < size; ++i) list.push_back({i, i / 2});
        for (size_t value = 0; value < size; ++value) {
            ASSERT_EQ(list.countUpTo(value, &Item::half), std::min(2 * value + 2, size));
        }
        EXPECT_EQ(list.countUpTo(size, &Item::place), size);
    }
}

}  // namespace
}  // namespace sonaprobe
