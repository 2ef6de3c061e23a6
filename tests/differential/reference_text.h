// LOG texts the slow way: the C library prints one conversion after the other.

#pragma once

#include <cstdint>
#include <string>

#include "events/decoder.h"
#include "record/trace_record.h"

namespace sonaprobe::differential {

// The value of a slice of an argument word.
uint64_t valueOf(const TraceRecord& record, Slice slice);

// The text of a row, filled from a record; `divisor` is that of the trace clock.
std::string logText(const Decoder& decoder, const Row& row, const TraceRecord& record,
                    double divisor);

}  // namespace sonaprobe::differential
