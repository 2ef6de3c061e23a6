// What a reader gets: order, small reads, wraps, tickets never written, and the counts.

#include <chrono>
#include <set>

#include "facility_fixture.h"

namespace sonaprobe::standin {
namespace {

class Reading : public FacilityTest {
  protected:
    void SetUp() override {
        FacilityTest::SetUp();
        if (IsSkipped()) return;
        setUpWith(static_cast<uint32_t>(kEntries));
        ASSERT_TRUE(attachProducer(producer));
    }
    void TearDown() override { detachProducer(producer); }

    void expectCounts(uint64_t posted, uint64_t pending, uint64_t lost) {
        const FacilityStatus status = statusNow();
        EXPECT_EQ(status.posted, posted);
        EXPECT_EQ(status.pending, pending);
        EXPECT_EQ(status.lost, lost);
    }
    bool wrapped() { return (statusNow().info.flags & platform::kBufferWrapped) != 0; }

    // Draws tickets as a producer does that is killed before it writes.
    void dieWithTickets(uint64_t count) { producer.state->control.fetch_add(count); }

    static constexpr uint64_t kEntries = 1024;
    Producer producer;
};

void expectRun(const std::vector<RecordWords>& records, uint64_t first, uint64_t count) {
    ASSERT_EQ(records.size(), count);
    for (uint64_t i = 0; i < count; i++) {
        ASSERT_EQ(records[i], recordOf(0x05245C0C, first + i)) << i;
    }
}

TEST_F(Reading, HandsOutTheOldestThatFit) {
    EXPECT_EQ(postMany(producer, 0, 10), 10U);
    expectCounts(10, 10, 0);
    expectRun(readAll(3), 0, 3);
    expectCounts(10, 7, 0);
    expectRun(readAll(1), 3, 1);
    expectRun(readAll(100), 4, 6);
    expectCounts(10, 0, 0);
    EXPECT_TRUE(readAll(100).empty());
}

TEST_F(Reading, GoesOnOverTheEndOfTheRing) {
    for (uint64_t first = 0; first < 10 * kEntries; first += 700) {
        EXPECT_EQ(postMany(producer, first, 700), 700U);
        EXPECT_FALSE(wrapped());
        expectRun(readAll(kEntries), first, 700);
    }
    EXPECT_EQ(statusNow().lost, 0U);
}

TEST_F(Reading, AFullRingHasNotWrapped) {
    postMany(producer, 0, kEntries);
    EXPECT_FALSE(wrapped());
    expectRun(readAll(kEntries), 0, kEntries);
}

TEST_F(Reading, AWrapLosesTheOldestAndIsClearedByTheRead) {
    postMany(producer, 0, kEntries + 5);
    EXPECT_TRUE(wrapped());
    expectCounts(kEntries + 5, kEntries, 5);
    expectRun(readAll(10), 5, 10);
    EXPECT_FALSE(wrapped());
    expectRun(readAll(kEntries), 15, kEntries - 10);
    expectCounts(kEntries + 5, 0, 5);
    postMany(producer, 0, 3 * kEntries);
    EXPECT_TRUE(wrapped());
    expectRun(readAll(kEntries), 2 * kEntries, kEntries);
    expectCounts(4 * kEntries + 5, 0, 2 * kEntries + 5);
}

TEST_F(Reading, CountsNothingWhileDisabled) {
    postMany(producer, 0, 4);
    ASSERT_EQ(enableTracing(false), 0);
    EXPECT_EQ(postMany(producer, 4, 4), 0U);
    dieWithTickets(3);  // of producers that saw tracing enabled and draw too late
    expectCounts(4, 4, 0);
    expectRun(readAll(2), 0, 2);
    ASSERT_EQ(enableTracing(true), 0);
    EXPECT_EQ(postMany(producer, 8, 2), 2U);
    expectCounts(6, 4, 0);
    expectRun(readAll(1), 2, 1);
    expectRun(readAll(1), 3, 1);
    expectRun(readAll(9), 8, 2);
    expectCounts(6, 0, 0);
}

TEST_F(Reading, WaitsAHundredMillisecondsInAllForUnwrittenTickets) {
    postMany(producer, 0, 2);
    dieWithTickets(2);
    postMany(producer, 2, 2);
    dieWithTickets(1);
    const auto start = std::chrono::steady_clock::now();
    const auto records = readAll(100);
    const auto waited = std::chrono::steady_clock::now() - start;
    expectRun(records, 0, 4);
    EXPECT_GE(waited, std::chrono::milliseconds(100));
    EXPECT_LT(waited, std::chrono::milliseconds(250));
    expectCounts(7, 0, 3);
}

TEST_F(Reading, WaitsForARecordThatIsStillBeingWritten) {
    postMany(producer, 0, 1);
    ASSERT_EQ(readAll(9).size(), 1U);
    const uint64_t drawn = producer.state->control.fetch_add(1);
    const pid_t slow = startChild([&] {
        const timespec pause{0, 30'000'000};
        nanosleep(&pause, nullptr);
        writeSlot(producer.ring, ticketsIn(drawn), recordOf(0x05245C0C, 77));
        return 0;
    });
    expectRun(readAll(9), 77, 1);
    EXPECT_EQ(waitFor(slow), 0);
    expectCounts(2, 0, 0);
}

TEST_F(Reading, ARecordOfAnEarlierLapIsNotTakenForALaterOne) {
    postMany(producer, 0, kEntries);
    ASSERT_EQ(readAll(kEntries).size(), kEntries);
    postMany(producer, 5000, 1);
    // A producer stopped for a whole lap wakes up and finishes its record.
    writeSlot(producer.ring, 0, recordOf(0x05245C0C, 0));
    EXPECT_TRUE(readAll(kEntries).empty());
    expectCounts(kEntries + 1, 0, 1);
}

TEST_F(Reading, LeavesTheReservedWordAsItStands) {
    postMany(producer, 0, 1);
    uint64_t words[kSlotWords];
    uint64_t count = 0;
    ASSERT_EQ(readRecords(reinterpret_cast<unsigned char*>(words), 1, count), 0);
    ASSERT_EQ(count, 1U);
    EXPECT_EQ(words[7], checksumOf(0, recordOf(0x05245C0C, 0)));
    EXPECT_NE(words[7], 0U);
}

TEST_F(Reading, CountsOutliveRemoval) {
    postMany(producer, 0, 5);
    ASSERT_EQ(readAll(2).size(), 2U);
    ASSERT_EQ(removeBuffer(), 0);
    expectCounts(5, 0, 3);
    EXPECT_EQ(postMany(producer, 5, 1), 0U);
    setUpWith(static_cast<uint32_t>(kEntries));
    expectCounts(0, 0, 0);
}

TEST(Checksum, TellsEveryMixtureOfTwoWritesApart) {
    const RecordWords one = recordOf(0x05245C0C, 1);
    const RecordWords two = recordOf(0x05245C0D, 2);
    std::set<uint64_t> sums;
    for (unsigned mix = 0; mix < 128; mix++) {
        RecordWords words;
        for (size_t i = 0; i < words.size(); i++) words[i] = (mix >> i & 1) != 0 ? two[i] : one[i];
        sums.insert(checksumOf(40, words));
        sums.insert(checksumOf(41, words));
    }
    // Words 4 and 5 are the same in both records, so that 32 mixtures differ.
    EXPECT_EQ(sums.size(), 64U);
}

TEST(Checksum, TellsSwappedWordsAndFlippedTopBitsApart) {
    const RecordWords words{1, 2, 3, 4, 5, 6, 7};
    const uint64_t sum = checksumOf(0, words);
    for (size_t i = 0; i < words.size(); i++) {
        for (size_t j = i + 1; j < words.size(); j++) {
            RecordWords swapped = words;
            std::swap(swapped[i], swapped[j]);
            EXPECT_NE(checksumOf(0, swapped), sum);
            RecordWords flipped = words;
            flipped[i] ^= uint64_t{1} << 63;
            flipped[j] ^= uint64_t{1} << 63;
            EXPECT_NE(checksumOf(0, flipped), sum);
        }
    }
    EXPECT_NE(checksumOf(0, RecordWords{}), 0U);
}

}  // namespace
}  // namespace sonaprobe::standin
