// Counts records by what their debug ids say.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

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
    EventTally() : recent_(kRecent) {}

    void add(const TraceRecord& record) {
        Recent& recent = recent_[placeByHighBits(record.debugid, kRecentBits)];
        if (recent.debugid != record.debugid) [[unlikely]]
            replace(recent, record.debugid);
        ++recent.records;
        if (recent.byArguments) ++countOf(counts_.outcomes, decode(record).outcome);
    }

    EventCounts counts() const;

  private:
    static constexpr unsigned kRecentBits = 10;
    static constexpr size_t kRecent = size_t{1} << kRecentBits;

    // Records of a debug id, as long as no other one takes its place.
    struct Recent {
        uint64_t records = 0;
        uint32_t debugid = 0;
        bool byArguments = true;  // the outcome is, which is counted for each record
    };

    static uint64_t& countOf(OutcomeCounts& counts, Outcome outcome);
    static void put(const Recent& recent, EventCounts& counts);
    void replace(Recent& recent, uint32_t debugid);

    EventCounts counts_;  // but those of
    std::vector<Recent> recent_;
};

}  // namespace sonaprobe
