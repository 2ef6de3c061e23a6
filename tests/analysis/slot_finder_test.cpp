// Slots of damaged files are found again: each that the damage has not touched, and no other.

#include "analysis/slot_finder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include "random_trace.h"

namespace sonaprobe::test {
namespace {

constexpr size_t kSlot = sizeof(TraceRecord);
constexpr size_t kRounds = 400;

// What the finder makes of a file that comes in pieces of `piece` bytes.
struct Reading {
    std::vector<Found> all;
    bool isTrace = false;

    // But empty ones.
    std::vector<TraceRecord> slots() const {
        std::vector<TraceRecord> result;
        for (const Found& found : all) {
            if (found.isSlot() && found.what != Found::What::empty) result.push_back(found.slot);
        }
        return result;
    }

    // The numbers of the slots in which what is no slot begins.
    std::vector<uint64_t> damage() const {
        std::vector<uint64_t> result;
        for (const Found& found : all) {
            if (!found.isSlot()) result.push_back(found.slotNumber());
        }
        return result;
    }
};

// Whether records without doubt are taken one by one or all at once.
enum class By : uint8_t { slot, run };

Reading read(const Bytes& file, size_t piece, By by) {
    Reading reading;
    SlotFinder finder;
    uint64_t end = 0;
    const auto take = [&](const Found& found) {
        EXPECT_EQ(found.offset, end);
        end += found.length;
        reading.all.push_back(found);
    };
    const auto takeRun = [&] {
        const RecordRun run = finder.plainRecords();
        EXPECT_TRUE(run.records.empty() || run.firstSlot == end / kSlot);
        for (const TraceRecord& record : run.records) {
            take({Found::What::record, ByteOrder::own, end, kSlot, record});
        }
    };
    const auto takeAll = [&] {
        if (by == By::run) takeRun();
        while (const auto found = finder.next()) {
            take(*found);
            if (by == By::run) takeRun();
        }
    };
    for (size_t begin = 0; begin < file.size(); begin += piece) {
        finder.feed(std::span(file).subspan(begin, std::min(piece, file.size() - begin)));
        takeAll();
    }
    finder.end();
    takeAll();
    EXPECT_EQ(end, file.size());
    reading.isTrace = finder.isTrace();
    return reading;
}

// The same by either way.
Reading readingOf(const Bytes& file, size_t piece = 100'000) {
    Reading bySlot = read(file, piece, By::slot);
    const Reading byRun = read(file, piece, By::run);
    EXPECT_EQ(bySlot.slots(), byRun.slots());
    EXPECT_EQ(bySlot.damage(), byRun.damage());
    EXPECT_EQ(bySlot.isTrace, byRun.isTrace);
    return bySlot;
}

// The slots but those that bytes [begin, end) are of.
std::vector<TraceRecord> without(std::vector<TraceRecord> slots, size_t begin, size_t end) {
    const auto first = slots.begin() + static_cast<ptrdiff_t>(begin / kSlot);
    slots.erase(first, slots.begin() + static_cast<ptrdiff_t>((end + kSlot - 1) / kSlot));
    return slots;
}

// A trace of 60 records, and random places in it.
class SlotFinderTest : public testing::TestWithParam<Codes> {
  protected:
    std::vector<TraceRecord> makeTrace() { return soundTrace(random_, GetParam(), 60); }

    // A place to begin damage at, with slots before it and after.
    size_t makePlace() { return 12 * kSlot + random_.below(30 * kSlot); }

    // Who loses only the lowest bytes of its time stamp, or its reserved word, is not found out.
    static bool canBeSeen(size_t begin, size_t end) {
        return begin % kSlot < 48 && (end % kSlot == 0 || end % kSlot > 3);
    }

    Random random_{2026};
};

std::string nameOf(const testing::TestParamInfo<Codes>& codes) {
    constexpr const char* kNames[] = {"drivers", "otherClassWord", "any"};
    return kNames[static_cast<size_t>(codes.param)];
}

INSTANTIATE_TEST_SUITE_P(Codes, SlotFinderTest,
                         testing::Values(Codes::drivers, Codes::oneOtherClassWord, Codes::any),
                         nameOf);

// Where codes are any numbers, nothing tells slots from what lies a byte beside them.
class ShiftedSlotsTest : public SlotFinderTest {};

INSTANTIATE_TEST_SUITE_P(Codes, ShiftedSlotsTest,
                         testing::Values(Codes::drivers, Codes::oneOtherClassWord), nameOf);

TEST_P(SlotFinderTest, ASoundFileIsItsSlots) {
    for (size_t round = 0; round < kRounds; ++round) {
        const auto slots = soundTrace(random_, GetParam(), random_.below(60), true);
        const Reading reading = readingOf(bytesOf(slots), 1 + random_.below(3000));
        ASSERT_EQ(reading.slots(), slots) << round;
        ASSERT_TRUE(reading.damage().empty()) << round;
        ASSERT_TRUE(reading.isTrace) << round;
    }
}

TEST_P(ShiftedSlotsTest, BytesInBetweenCostTheSlotThatTheyStandIn) {
    for (size_t round = 0; round < kRounds; ++round) {
        const std::vector<TraceRecord> slots = makeTrace();
        const size_t at = makePlace();
        if (!canBeSeen(at, at)) continue;
        Bytes file = bytesOf(slots);
        const Bytes extra = randomBytes(random_, 1 + random_.below(300));
        file.insert(file.begin() + static_cast<ptrdiff_t>(at), extra.begin(), extra.end());
        const Reading reading = readingOf(file);
        const size_t end = at % kSlot == 0 ? at : at + 1;
        ASSERT_EQ(reading.slots(), without(slots, at, end)) << round << ' ' << at;
        ASSERT_EQ(reading.damage(), std::vector<uint64_t>{at / kSlot}) << round;
    }
}

TEST_P(ShiftedSlotsTest, BytesGoneCostTheSlotsThatTheyWereOf) {
    for (size_t round = 0; round < kRounds; ++round) {
        const std::vector<TraceRecord> slots = makeTrace();
        const size_t begin = makePlace();
        const size_t end = begin + 1 + random_.below(300);
        if ((end - begin) % kSlot == 0 || !canBeSeen(begin, end)) continue;
        Bytes file = bytesOf(slots);
        file.erase(file.begin() + static_cast<ptrdiff_t>(begin),
                   file.begin() + static_cast<ptrdiff_t>(end));
        const Reading reading = readingOf(file);
        ASSERT_EQ(reading.slots(), without(slots, begin, end))
            << round << ' ' << begin << ' ' << end;
        ASSERT_EQ(reading.damage(), std::vector<uint64_t>{begin / kSlot}) << round;
    }
}

TEST_P(SlotFinderTest, GarbageAndZerosCostTheSlotsThatTheyLieOn) {
    for (size_t round = 0; round < kRounds; ++round) {
        const std::vector<TraceRecord> slots = makeTrace();
        const size_t begin = makePlace();
        const size_t end = begin + kSlot + random_.below(300);
        if (!canBeSeen(begin, end)) continue;
        Bytes file = bytesOf(slots);
        const Bytes garbage =
            random_.oneIn(2) ? Bytes(end - begin) : randomBytes(random_, end - begin);
        std::ranges::copy(garbage, file.begin() + static_cast<ptrdiff_t>(begin));
        const Reading reading = readingOf(file);
        ASSERT_EQ(reading.slots(), without(slots, begin, end))
            << round << ' ' << begin << ' ' << end;
    }
}

TEST_P(SlotFinderTest, TheOtherByteOrderIsRead) {
    for (size_t round = 0; round < kRounds; ++round) {
        const std::vector<TraceRecord> slots = makeTrace();
        const Reading reading = readingOf(bytesOf(swapped(slots)));
        ASSERT_EQ(reading.slots(), slots) << round;
        for (const Found& found : reading.all) ASSERT_EQ(found.order, ByteOrder::swapped) << round;
    }
}

TEST(SlotFinder, WhatIsNoTraceIsNone) {
    Random random(7);
    for (size_t round = 0; round < 20; ++round) {
        EXPECT_FALSE(readingOf(randomBytes(random, random.below(100'000))).isTrace);
    }
    EXPECT_FALSE(readingOf(Bytes(10'000)).isTrace);
    EXPECT_FALSE(readingOf({}).isTrace);
}

}  // namespace
}  // namespace sonaprobe::test
