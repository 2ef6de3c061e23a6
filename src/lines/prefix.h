// The columns before the LOG text: time, processor, thread, code, direction and indentation, name,
// object.

#pragma once

#include <cstdint>

#include "events/block_text.h"
#include "lines/line_state.h"
#include "record/trace_record.h"

namespace sonaprobe {

// "Group::method", and how many characters the group has: no fewer than the separator stand after
// it.
struct EventName {
    BlockText text;
    size_t groupLength = 0;
};

// What the prefix needs of a record.
struct EventHeader {
    uint64_t timestamp;
    uint64_t thread;
    uint32_t debugid;
    uint32_t cpuid;
};

constexpr EventHeader headerOf(const TraceRecord& record) {
    return {record.timestamp, record.arg5, record.debugid, record.cpuid};
}

// Puts the prefix on the line being printed, each column ended by a blank, as the options switch
// them; an object of 0 has no column. The LOG text follows.
void printEventPrefix(LineState& state, EventHeader header, EventName name, uint64_t object);

}  // namespace sonaprobe
