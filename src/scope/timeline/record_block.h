// A block of records as the page keeps them: what they are, when, and their words, each kind's
// words in columns of their own.

#pragma once

#include <cstdint>
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

struct RecordBlock {
    static constexpr size_t kRecords = 65536;

    uint64_t firstRecord = 0;
    uint64_t firstSlot = 0;
    Nanoseconds least = 0;
    Nanoseconds latest = 0;
    std::vector<TraceRecord> records;
    std::vector<uint32_t> local;  // by record: its place in `symbols`
    std::vector<LocalSymbol> symbols;
    std::vector<Segment> segments;
    std::vector<Deed> deeds;
    std::vector<Failing> failures;
    std::vector<SlotGap> gaps;

    // Keeps its memory.
    void clear();
};

std::string packed(const RecordBlock& block);

}  // namespace sonaprobe::scope::timeline
