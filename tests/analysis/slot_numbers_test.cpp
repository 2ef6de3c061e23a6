// Slots and their places.

#include "analysis/slot_numbers.h"

#include <gtest/gtest.h>

namespace sonaprobe {
namespace {

TEST(SlotNumbers, FindASlotsPlaceAndAPlacesSlot) {
    SlotNumbers numbers;
    for (const uint64_t slot : {3U, 4U, 5U, 9U, 20U, 21U}) numbers.add(slot);
    EXPECT_EQ(numbers.size(), 6U);
    EXPECT_EQ(numbers.at(0), 3U);
    EXPECT_EQ(numbers.at(3), 9U);
    EXPECT_EQ(numbers.at(5), 21U);
    EXPECT_EQ(numbers.placeOf(5), 2U);
    EXPECT_EQ(numbers.placeOf(21), 5U);
    for (const uint64_t slot : {0U, 2U, 6U, 10U, 22U}) {
        EXPECT_EQ(numbers.placeOf(slot), std::nullopt) << slot;
    }
}

TEST(SlotNumbers, FindTheNearestPlaceOfASlotThatIsLeftOut) {
    SlotNumbers numbers;
    for (const uint64_t slot : {3U, 4U, 9U}) numbers.add(slot);
    EXPECT_EQ(numbers.placeNear(0), 0U);
    EXPECT_EQ(numbers.placeNear(4), 1U);
    EXPECT_EQ(numbers.placeNear(8), 1U);
    EXPECT_EQ(numbers.placeNear(100), 2U);
    EXPECT_EQ(SlotNumbers().placeOf(0), std::nullopt);
}

}  // namespace
}  // namespace sonaprobe
