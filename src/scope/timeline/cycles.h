// The chunk of I/O cycles.

#pragma once

#include <string>

#include "analysis/io_cycles.h"
#include "analysis/slot_numbers.h"
#include "scope/timeline/survey.h"

namespace sonaprobe::scope::timeline {

// The cycles that are shown, thread by thread. `records` are the slots of the page's records; a
// cycle whose start was merged has the one before.
std::string packedCycles(const IoTrace& trace, const Survey& survey, const SlotNumbers& records);

}  // namespace sonaprobe::scope::timeline
