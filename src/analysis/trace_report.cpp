// Counts what is in a trace.

#include "analysis/trace_report.h"

#include <algorithm>

#include "analysis/class_names.h"
#include "analysis/event_traits.h"
#include "events/event.h"

namespace sonaprobe {

namespace {

bool isPoint(uint32_t debugid) {
    switch (qualifierOf(debugid)) {
        case Qualifier::start: return startsArePoints(codeOf(debugid));
        case Qualifier::end: return false;
        default: return true;
    }
}

bool losesRecords(FindingKind kind) {
    return kind == FindingKind::misaligned || kind == FindingKind::garbage ||
           kind == FindingKind::invalidSlots || kind == FindingKind::emptySlots;
}

uint64_t& countOf(OutcomeCounts& counts, Outcome outcome) {
    switch (outcome) {
        case Outcome::text: return counts.printed;
        case Outcome::gated: return counts.verboseOnly;
        case Outcome::silent: return counts.silent;
        default: return counts.unclassified;
    }
}

}  // namespace

TraceReport::TraceReport(bool withCalls) {
    if (withCalls) calls_.emplace();
}

void TraceReport::take(const Found& found) {
    slots_.take(found);
    const uint64_t slot = found.slotNumber();
    switch (found.what) {
        case Found::What::divisor:
            if (found.slot.timestamp != 0) divisors_.try_emplace(found.slot.timestamp, slot);
            calls_ ? calls_->take(found.slot, slot)
                   : void(clock_.takeDivisor(found.slot.timestamp));
            break;
        case Found::What::record: takeRecord(found.slot, slot); break;
        default: break;
    }
}

void TraceReport::take(const RecordRun& run) {
    slots_.take(run);
    uint64_t slot = run.firstSlot;
    for (const TraceRecord& record : run.records) takeRecord(record, slot++);
}

void TraceReport::takeRecord(const TraceRecord& record, uint64_t slot) {
    calls_ ? calls_->take(record, slot) : void(clock_.read(record));
    if (isFirst_) begin_ = clock().kernelTime(record);
    isFirst_ = false;
    if (clock().stepsBack() != stepsBack_) {
        stepsBack_ = clock().stepsBack();
        const Nanoseconds back =
            nanosecondsOf(latestTick_, record.timestamp, clock().ticksPerMicrosecond());
        slots_.findings().add(
            {.kind = FindingKind::stepBack, .slot = slot, .lastSlot = slot, .back = back});
        latestTick_ = record.timestamp;
    }
    latestTick_ = std::max(latestTick_, record.timestamp);
    processors_.add(record.cpuid);
    classes_.add(classOf(record.debugid));
    ++countOf(outcomes_, decode(record).outcome);
    if (isPoint(record.debugid)) ++points_;
}

void TraceReport::finish() {
    slots_.finish();
    if (!calls_) return;
    calls_->finish();
    const std::vector<Finding> known = findings().all();
    for (const MissingStretch& stretch : calls_->missing()) {
        // Where slots are broken it is no wonder that records are missing.
        const bool explained = std::ranges::any_of(known, [&](const Finding& finding) {
            return losesRecords(finding.kind) && finding.lastSlot >= stretch.after &&
                   finding.slot <= stretch.before;
        });
        if (explained) continue;
        slots_.findings().add({.kind = FindingKind::missingRecords,
                               .slot = stretch.after,
                               .lastSlot = stretch.before,
                               .missing = stretch});
    }
}

}  // namespace sonaprobe
