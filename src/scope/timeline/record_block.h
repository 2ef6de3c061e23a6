// A block of records as the page keeps them: what they are, when, and their words, each kind's
// words in columns of their own.

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "analysis/trace_clock.h"
#include "record/trace_record.h"

namespace sonaprobe::scope::timeline {

// From a record on, time is `time` at `tick`.
struct Segment {
    uint32_t index = 0;  // of the record in its block
    uint64_t tick = 0;   // not later than the record's, as ticks go round
    Nanoseconds time = 0;
    uint64_t divisor = 1;  // ticks a microsecond
};

// What records do to the calls of their thread besides the usual: a start opens one, an end closes
// the innermost, nothing is cut off.
struct Deed {
    // Of `closed`, that before the record all open calls of all threads were cut off at `time`.
    static constexpr uint32_t kAll = 0xFFFFFFFF;

    uint32_t index = 0;
    uint32_t closed = 0;  // calls, an end's own included
    Nanoseconds time = 0;
};

// A record that tells of a failure.
struct Failing {
    uint32_t index = 0;
};

// Slots passed over before a record, that are none.
struct SlotGap {
    uint32_t index = 0;
    uint64_t slots = 0;
};

// A kind of record on one thread.
struct LocalSymbol {
    uint32_t symbol = 0;  // its number in the page
    uint32_t thread = 0;
    uint32_t depth = 0;  // open calls of the thread before the block
    uint8_t words = 0;   // bit n: arg n + 1 is kept
};

// What records have, each part apart from the others, as the page has it.
struct RecordBlock {
    static constexpr size_t kRecords = 65536;
    using Words = std::array<uint64_t, 4>;

    template <class Part>
    static std::unique_ptr<Part[]> ofEach() {
        return std::make_unique_for_overwrite<Part[]>(kRecords);
    }

    uint64_t firstRecord = 0;
    uint64_t firstSlot = 0;
    Nanoseconds least = 0;
    Nanoseconds latest = 0;
    // By record; touched only as far as there are records.
    size_t records = 0;
    std::unique_ptr<uint32_t[]> local = ofEach<uint32_t>();  // its place in `symbols`
    std::unique_ptr<uint64_t[]> ticks = ofEach<uint64_t>();
    std::unique_ptr<uint32_t[]> processors = ofEach<uint32_t>();
    std::unique_ptr<Words[]> words = ofEach<Words>();
    std::vector<LocalSymbol> symbols;
    std::vector<Segment> segments;
    std::vector<Deed> deeds;
    std::vector<Failing> failures;
    std::vector<SlotGap> gaps;

    // Less than kRecords are there.
    void add(const TraceRecord& record, uint32_t place) {
        local[records] = place;
        ticks[records] = record.timestamp;
        processors[records] = record.cpuid;
        words[records] = {record.arg1, record.arg2, record.arg3, record.arg4};
        ++records;
    }

    // Keeps its memory.
    void clear();
};

std::string packed(const RecordBlock& block);

}  // namespace sonaprobe::scope::timeline
