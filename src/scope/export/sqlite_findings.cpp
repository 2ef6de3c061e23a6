// The tables findings and dropouts, by what info and why find out.

#include "scope/export/sqlite_findings.h"

#include "analysis/dropout_causes.h"
#include "analysis/trace_report.h"
#include "scope/finding_text.h"
#include "scope/found_slots.h"
#include "scope/input.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

void putWrong(Database& database, const TraceOptions& trace) {
    TraceReport report(true);
    FoundSlots(trace.path, trace.mostGrowth).forEachRun([&](const auto& found) {
        report.take(found);
    });
    report.finish();
    Insert insert(database, "findings", 5);
    for (const Finding& finding : report.findings().all()) {
        const std::string meaning = meaningOf(finding);
        insert.add(nameOf(finding.kind))
            .add(static_cast<int64_t>(finding.slot))
            .add(static_cast<int64_t>(finding.lastSlot))
            .add(meaning)
            .add(adviceOf(finding.kind))
            .put();
    }
    insert.finish();
}

void putDropouts(Database& database, const TraceOptions& trace) {
    IoObserver observer;
    Input input(trace);
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) observer.take(slot);
    }
    const IoAnswer answer = judgeIo(observer.finish());
    Insert insert(database, "dropouts", 9);
    for (const Dropout& dropout : answer.dropouts) {
        const std::string thread = wordText(dropout.thread);
        const Verdict& verdict = dropout.verdict;
        insert.add(static_cast<int64_t>(dropout.slot)).add(dropout.time).add(thread);
        insert.add(dropout.budget).add(dropout.lacking);
        insert.add(kDropoutCauses[static_cast<size_t>(verdict.cause)])
            .add(kCertainties[static_cast<size_t>(verdict.certainty)]);
        insert.add(verdict.culprit ? std::optional(verdict.culprit->slot) : std::nullopt);
        insert.add(verdict.culprit ? verdict.culprit->code : std::nullopt);
        insert.put();
    }
    insert.finish();
}

}  // namespace

void putFindings(Database& database, const TraceOptions& trace) {
    putWrong(database, trace);
    putDropouts(database, trace);
}

}  // namespace sonaprobe::scope
