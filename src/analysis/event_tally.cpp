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
    for (const Recent& recent : recent_) put(recent, counts);
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

void EventTally::put(const Recent& recent, EventCounts& counts) {
    if (recent.records == 0) return;
    counts.recordsOfClass[classOf(recent.debugid)] += recent.records;
    if (isPoint(recent.debugid)) counts.points += recent.records;
    if (recent.byArguments) return;
    TraceRecord example{};
    example.debugid = recent.debugid;
    countOf(counts.outcomes, decode(example).outcome) += recent.records;
}

void EventTally::replace(Recent& recent, uint32_t debugid) {
    put(recent, counts_);
    recent = {.debugid = debugid, .byArguments = outcomeHangsOnArguments(debugid)};
}

}  // namespace sonaprobe
