// What a page's head says of lanes, dropouts, and of the trace as a whole.

#pragma once

#include <string>
#include <vector>

#include "analysis/dropout_causes.h"
#include "analysis/slot_numbers.h"
#include "scope/json.h"
#include "scope/timeline/event_tables.h"
#include "scope/timeline/overview.h"
#include "scope/timeline/survey.h"
#include "scope/timeline/thinning.h"

namespace sonaprobe::scope::timeline {

// What there is to say of a thread, of its merged records too.
struct ThreadFacts {
    uint64_t id = 0;
    uint64_t records = 0;
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    Nanoseconds busy = 0;
    uint32_t depth = 0;
    std::vector<uint64_t> processors;  // records of each

    void add(Nanoseconds time, uint32_t processor);
};

// I/O threads first, then the busiest. `threads` are by the clock's number.
Json lanesOf(const std::vector<ThreadFacts>& threads, const IoTrace& io, const EventTables& tables);

// `records` are the slots of the page's records.
Json dropoutsOf(const IoAnswer& answer, const std::vector<ThreadFacts>& threads, const Json& lanes,
                const SlotNumbers& records, const CodeNames& names);

// What the page must say beforehand; it has so many records, of all or of a part. `title` is the
// file's name.
Json notesOf(const IoAnswer& answer, uint64_t records, bool isPart, const Thinning& thinning,
             const std::string& title, const Overview& overview);

}  // namespace sonaprobe::scope::timeline
