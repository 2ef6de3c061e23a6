// A record's argument words, read as a row's slices and conditions ask for them.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "events/decoder.h"
#include "record/trace_record.h"

namespace sonaprobe {

inline uint64_t argumentOf(const TraceRecord& record, Slice slice, bool signExtend = false) {
    static_assert(offsetof(TraceRecord, arg1) == 1 * sizeof(uint64_t));
    static_assert(offsetof(TraceRecord, arg5) == 5 * sizeof(uint64_t));
    uint64_t word;
    std::memcpy(&word, reinterpret_cast<const char*>(&record) + slice.word * sizeof word,
                sizeof word);
    word <<= slice.dropHigh;
    return signExtend ? static_cast<uint64_t>(static_cast<int64_t>(word) >> slice.dropLow)
                      : word >> slice.dropLow;
}

inline bool holds(const Condition& condition, const TraceRecord& record) {
    switch (condition.test) {
        case Test::always: return true;
        case Test::equals: return argumentOf(record, condition.slice) == condition.value;
        case Test::notZero: return argumentOf(record, condition.slice) != 0;
    }
    return false;
}

}  // namespace sonaprobe
