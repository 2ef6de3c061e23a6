// The one interpreter of decoder rows.

#pragma once

#include "events/decoder.h"
#include "record/trace_record.h"

namespace sonaprobe {

// Prints a record of the decoder's class: one line where a text answers, nothing where the event is
// known and none does, the unclassified line where the event is unknown.
void decodeRecord(const Decoder& decoder, const TraceRecord& record);

}  // namespace sonaprobe
