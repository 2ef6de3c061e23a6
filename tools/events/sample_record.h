// Records that make each text print once, with argument values that a reader can check by eye.

#pragma once

#include <cstdint>
#include <vector>

#include "events/catalog.h"
#include "record/trace_record.h"

namespace sonaprobe::events {

// Records of a class, in the order of its texts: one for each text, and a second one where a word
// (as in "External" or "Internal") would not be shown by any. Ends the program with a message where
// no record can make a text print.
//
// Values tell from where they come. Of argN, a decimal is NNN, its halves N and N + 5, its bytes
// their number and 1; a hexadecimal number ends in the same digit after "cafe", a pointer after
// "feed"; a time in nanoseconds is N.111.222.333; four characters are "argN", one is a capital
// letter; ticks are N.5 once divided; of two stamps the later is 7 s more.
std::vector<TraceRecord> sampleRecords(const TracedClass& traced);

}  // namespace sonaprobe::events
