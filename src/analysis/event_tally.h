// Counts records by what their debug ids say.

#pragma once

#include <cstdint>
#include <map>

#include "analysis/recently_found.h"
#include "events/event.h"
#include "record/trace_record.h"

namespace sonaprobe {

// What sonaprobe makes of records; together they are all records.
struct OutcomeCounts {
    uint64_t printed = 0;       // under a text of their own; the audio server's with -A
    uint64_t verboseOnly = 0;   // the same, with -v alone
    uint64_t silent = 0;        // known, without a text
    uint64_t unclassified = 0;  // no decoder knows the code
};

struct EventCounts {
    // By debug id without event number and qualifier; without class, too, where it is no audio
    // code.
    std::map<uint32_t, uint64_t> recordsOfClass;
    OutcomeCounts outcomes;
    uint64_t points = 0;
};

// Debug ids are few, and what they have in common is looked up once for many records.
class EventTally {
  public:
    void add(const TraceRecord& record) {
        const uint32_t debugid = record.debugid;
        Common& common = recent_.find(
            debugid, debugid, [debugid] { return commonOf(debugid); },
            [this](uint32_t other, const Common& old) { put(other, old, counts_); });
        ++common.records;
        if (common.byArguments) countByArguments(record);
    }

    EventCounts counts() const;

  private:
    // What records of a debug id have in common.
    struct Common {
        uint64_t records = 0;
        bool byArguments = false;  // the outcome is, which is counted for each record
    };

    static Common commonOf(uint32_t debugid);
    void countByArguments(const TraceRecord& record);
    static uint64_t& countOf(OutcomeCounts& counts, Outcome outcome);
    static void put(uint32_t debugid, const Common& common, EventCounts& counts);

    EventCounts counts_;  // but those of
    RecentlyFound<uint32_t, Common, 10> recent_;
};

}  // namespace sonaprobe
