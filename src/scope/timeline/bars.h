// Calls and points as the page draws them: in rows, and in a pyramid of ever coarser levels.

#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/trace_clock.h"

namespace sonaprobe::scope::timeline {

// As in web/timeline/src/trace.ts.
constexpr uint8_t kFailure = 1;
constexpr uint8_t kCutOff = 2;
constexpr uint8_t kUnfinished = 4;
constexpr uint8_t kMerged = 8;
constexpr uint8_t kWaiting = 16;
constexpr uint8_t kThinned = 32;

constexpr uint32_t kDeepest = 0xFFFE;  // calls inside it are drawn at its depth

struct Bar {
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    uint64_t record = 0;      // of the start
    Nanoseconds longest = 0;  // of what was merged
    uint16_t event = 0;
    uint8_t flags = 0;
};

// A call that is open where a block ends: none of its blocks has it whole.
struct LongBar {
    Bar bar{};
    uint64_t endRecord = 0;  // which ended it; the number of records where none did
    Nanoseconds self = 0;
};

// Calls of one thread at one depth, or the points there.
struct RowKey {
    uint32_t thread = 0;  // the clock's number
    uint32_t depth = 0;
    bool points = false;

    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the result's 0 for a pointer.
    auto operator<=>(const RowKey&) const = default;
};

// The rows of a trace, numbered as they appear.
class Rows {
  public:
    uint32_t numberOf(const RowKey& key) {
        const uint32_t depth = std::min(key.depth, kDeepest);
        if (key.thread < threads_.size()) {
            const Thread& thread = threads_[key.thread];
            const std::vector<uint32_t>& numbers = key.points ? thread.points : thread.calls;
            if (depth < numbers.size() && numbers[depth] != 0) return numbers[depth] - 1;
        }
        return newNumber({key.thread, depth, key.points});
    }
    const std::vector<RowKey>& keys() const { return keys_; }

    // Row numbers in the order of their keys.
    std::vector<uint32_t> inOrder() const;

  private:
    struct Thread {
        std::vector<uint32_t> calls;  // by depth: row number after
        std::vector<uint32_t> points;
    };

    uint32_t newNumber(const RowKey& key);

    std::vector<RowKey> keys_;
    std::vector<Thread> threads_;
};

// Levels of a resolution each, four times as coarse as the one before. What is shorter than the
// resolution is merged with what begins in the same cell of its row, so that a level has as many
// bars as the span has cells, and the longer calls.
class Pyramid {
  public:
    Pyramid(Nanoseconds finest, Nanoseconds coarsest);

    // Bars of a row come in the order of time.
    void add(uint32_t row, const Bar& bar) { add(0, row, bar); }
    void finish();

    size_t levels() const { return levels_.size(); }
    Nanoseconds resolution(size_t level) const { return levels_[level].resolution; }
    // After finish(): a row that has bars.
    const std::vector<Bar>& bars(size_t level, uint32_t row) const {
        return levels_[level].rows[row].bars;
    }
    std::string packed(size_t level, const Rows& rows) const;

  private:
    struct Row {
        Bar pending{};
        bool isPending = false;
        // Of the cell that the pending bar begins in.
        Nanoseconds cellBegin = 0;
        Nanoseconds cellEnd = 0;
        std::vector<Bar> bars;
    };
    struct Level {
        Nanoseconds resolution;
        std::vector<Row> rows;
    };

    void add(size_t level, uint32_t row, const Bar& bar);
    void put(size_t level, uint32_t row, const Bar& bar);

    std::vector<Level> levels_;
};

// Calls that no block has whole, by row.
class LongBars {
  public:
    void add(uint32_t row, const LongBar& bar);
    std::string packed(const Rows& rows) const;

  private:
    std::vector<std::vector<LongBar>> rows_;
};

}  // namespace sonaprobe::scope::timeline
