// Counts what is in a trace.

#include "analysis/trace_report.h"

#include <algorithm>

namespace sonaprobe {

namespace {

bool losesRecords(FindingKind kind) {
    return kind == FindingKind::misaligned || kind == FindingKind::garbage ||
           kind == FindingKind::invalidSlots || kind == FindingKind::emptySlots;
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
        case Found::What::record: take({&found.slot, 1}, slot); break;
        default: break;
    }
}

// Flat, as the clock's reading is nearly all that a report without calls does.
[[gnu::flatten]] void TraceReport::take(const RecordRun& run) {
    slots_.take(run);
    // Most runs have neither a first record nor a step back.
    const bool clockRuns = run.inOrder && !isFirst_ && run.records.front().timestamp >= latestTick_;
    if (!clockRuns) {
        take(run.records, run.firstSlot);
        return;
    }
    uint64_t slot = run.firstSlot;
    if (calls_) {
        for (const TraceRecord& record : run.records) {
            calls_->take(record, slot++);
            count(record);
        }
    } else {
        for (const TraceRecord& record : run.records) {
            clock_.read(record);
            count(record);
        }
    }
    latestTick_ = run.records.back().timestamp;
}

void TraceReport::take(std::span<const TraceRecord> records, uint64_t slot) {
    for (const TraceRecord& record : records) {
        calls_ ? calls_->take(record, slot) : void(clock_.read(record));
        if (isFirst_) begin_ = clock().kernelTime(record);
        isFirst_ = false;
        if (clock().stepsBack() != stepsBack_) takeStepBack(record, slot);
        latestTick_ = std::max(latestTick_, record.timestamp);
        count(record);
        ++slot;
    }
}

void TraceReport::takeStepBack(const TraceRecord& record, uint64_t slot) {
    stepsBack_ = clock().stepsBack();
    const Nanoseconds back = clock().rate().between(record.timestamp, latestTick_);
    slots_.findings().add(
        {.kind = FindingKind::stepBack, .slot = slot, .lastSlot = slot, .back = back});
    latestTick_ = record.timestamp;
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
