// The way of one record: class filters, --basic, the decoder of its class.

#pragma once

#include "record/trace_record.h"

namespace sonaprobe {

// Filters the record, chooses its printer and has it printed: at most one line.
void dispatchRecord(const TraceRecord* record);

}  // namespace sonaprobe
