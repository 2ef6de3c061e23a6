// What records of one debug id have in common, and their counts.

#include "analysis/event_tally.h"

#include "analysis/class_names.h"
#include "analysis/event_traits.h"

namespace sonaprobe {

namespace {

bool isPoint(uint32_t debugid) {
    switch (qualifierOf(debugid)) {
        case Qualifier::start: return startsArePoints(codeOf(debugid));
        case Qualifier::end: return false;
        default: return true;
    }
}

}  // namespace

EventCounts EventTally::counts() const {
    EventCounts counts = counts_;
    recent_.forEach([&](uint32_t debugid, const Common& common) { put(debugid, common, counts); });
    return counts;
}

uint64_t& EventTally::countOf(OutcomeCounts& counts, Outcome outcome) {
    switch (outcome) {
        case Outcome::text: return counts.printed;
        case Outcome::gated: return counts.verboseOnly;
        case Outcome::silent: return counts.silent;
        default: return counts.unclassified;
    }
}

void EventTally::put(uint32_t debugid, const Common& common, EventCounts& counts) {
    counts.recordsOfClass[classOf(debugid)] += common.records;
    if (isPoint(debugid)) counts.points += common.records;
    if (common.byArguments) return;
    TraceRecord example{};
    example.debugid = debugid;
    countOf(counts.outcomes, decode(example).outcome) += common.records;
}

void EventTally::countByArguments(const TraceRecord& record) {
    ++countOf(counts_.outcomes, decode(record).outcome);
}

EventTally::Common EventTally::commonOf(uint32_t debugid) {
    return {.byArguments = outcomeHangsOnArguments(debugid)};
}

}  // namespace sonaprobe
