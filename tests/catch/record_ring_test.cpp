// What the ring of a watch keeps, and what it lets go.

#include "scope/catch/record_ring.h"

#include <gtest/gtest.h>
#include <random>

namespace sonaprobe::scope {
namespace {

constexpr size_t kChunk = RecordRing::kChunkRecords;
constexpr uint64_t kChunkBytes = kChunk * sizeof(TraceRecord);

// Records that are numbered by their time stamps.
std::vector<TraceRecord> numbered(uint64_t first, size_t count) {
    std::vector<TraceRecord> records(count);
    for (TraceRecord& record : records) {
        record.timestamp = first++;
        record.debugid = 0x05245C0C;
        record.reserved = 7;
    }
    return records;
}

std::vector<TraceRecord> keptIn(const RecordRing& ring) {
    std::vector<TraceRecord> kept;
    for (const RecordRing::Piece& piece : ring.pieces()) {
        const auto records = piece.records();
        kept.insert(kept.end(), records.begin(), records.end());
    }
    EXPECT_EQ(kept.size(), ring.slots());
    return kept;
}

std::vector<uint64_t> numbersIn(const RecordRing& ring) {
    std::vector<uint64_t> numbers;
    for (const TraceRecord& record : keptIn(ring)) numbers.push_back(record.timestamp);
    return numbers;
}

TEST(RecordRing, KeepsWholePassesFromATimeOn) {
    RecordRing ring(4 * kChunkBytes);
    ring.add(numbered(0, 3), 100);
    ring.add({}, 110);
    ring.add(numbered(3, 2), 120);
    ring.forgetBefore(100);
    EXPECT_EQ(numbersIn(ring), (std::vector<uint64_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(ring.oldest(), 100);
    ring.forgetBefore(101);
    EXPECT_EQ(numbersIn(ring), (std::vector<uint64_t>{3, 4}));
    EXPECT_EQ(ring.oldest(), 120);
    ring.forgetBefore(121);
    EXPECT_TRUE(ring.empty());
    EXPECT_FALSE(ring.hasLostSince(0));
}

TEST(RecordRing, KeepsWhatAReaderTakesForRecordsAndMarksLosses) {
    RecordRing ring(2 * kChunkBytes);
    std::vector<TraceRecord> records = numbered(0, 3);
    records[0].debugid = kDivisorMarker;
    records[1].debugid = kInvalidMarker;
    ring.add(records, 1);
    ring.markLoss(2);
    ring.add(numbered(3, 1), 2);
    const std::vector<TraceRecord> kept = keptIn(ring);
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(kept[0].timestamp, 2U);
    EXPECT_EQ(kept[0].reserved, 0U);
    EXPECT_EQ(kept[1].debugid, kInvalidMarker);
    EXPECT_EQ(kept[2].timestamp, 3U);
}

TEST(RecordRing, ItsLimitTakesTheOldestAndSaysSo) {
    RecordRing ring(2 * kChunkBytes);
    ring.add(numbered(0, kChunk), 10);
    ring.add(numbered(kChunk, kChunk), 20);
    EXPECT_FALSE(ring.hasLostSince(10));
    ring.add(numbered(2 * kChunk, 1), 30);
    EXPECT_EQ(numbersIn(ring).front(), kChunk);
    EXPECT_EQ(ring.bytes(), 2 * kChunkBytes);
    EXPECT_TRUE(ring.hasLostSince(10));
    EXPECT_FALSE(ring.hasLostSince(11));
}

TEST(RecordRing, APassThatIsLargerThanItsLimitIsNotWhole) {
    RecordRing ring(2 * kChunkBytes);
    ring.add(numbered(0, 5 * kChunk), 10);
    EXPECT_EQ(numbersIn(ring).back(), 5 * kChunk - 1);
    EXPECT_EQ(ring.bytes(), 2 * kChunkBytes);
    EXPECT_TRUE(ring.hasLostSince(10));
}

TEST(RecordRing, PiecesStayAsTheyWereWhateverComes) {
    RecordRing ring(2 * kChunkBytes);
    ring.add(numbered(0, 10), 10);
    const std::vector<RecordRing::Piece> pieces = ring.pieces();
    ring.add(numbered(10, 3 * kChunk), 20);
    ASSERT_EQ(pieces.size(), 1U);
    const auto records = pieces[0].records();
    ASSERT_EQ(records.size(), 10U);
    EXPECT_EQ(records.front().timestamp, 0U);
    EXPECT_EQ(records.back().timestamp, 9U);
}

// Against a plain list, over passes of any size and time.
TEST(RecordRing, KeepsWhatAPlainListKeepsInNoMoreMemory) {
    std::minstd_rand random(5);
    RecordRing ring(8 * kChunkBytes);
    std::vector<std::pair<Nanoseconds, uint64_t>> list;  // time of the pass, number
    uint64_t next = 0;
    Nanoseconds time = 0;
    for (int pass = 0; pass < 2000; ++pass) {
        time += static_cast<Nanoseconds>(random() % 30);
        const size_t count = random() % 4 == 0 ? random() % 3000 : random() % 20;
        ring.add(numbered(next, count), time);
        for (size_t i = 0; i < count; ++i) list.emplace_back(time, next++);
        const Nanoseconds limit = time - static_cast<Nanoseconds>(random() % 200);
        ring.forgetBefore(limit);
        std::erase_if(list, [&](const auto& record) { return record.first < limit; });
        const std::vector<uint64_t> kept = numbersIn(ring);
        ASSERT_LE(ring.bytes(), 8 * kChunkBytes);
        // The limit takes the oldest; what is left is the list's end.
        ASSERT_LE(kept.size(), list.size());
        ASSERT_TRUE(kept.size() == list.size() || ring.hasLostSince(limit));
        for (size_t i = 0; i < kept.size(); ++i) {
            ASSERT_EQ(kept[i], list[list.size() - kept.size() + i].second);
        }
        list.erase(list.begin(), list.end() - static_cast<std::ptrdiff_t>(kept.size()));
    }
    EXPECT_GT(next, 500'000U);
}

}  // namespace
}  // namespace sonaprobe::scope
