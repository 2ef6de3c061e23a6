// sonascope why: each dropout, its cause and the records that prove it.

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "analysis/dropout_causes.h"
#include "scope/command.h"
#include "scope/event_text.h"
#include "scope/options.h"
#include "scope/records.h"
#include "scope/repeatable.h"
#include "scope/selection_options.h"
#include "scope/why_report.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    OutputOptions output;
    bool all = false;
};

WhyAnswer answer(Input& input) {
    IoObserver observer;
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) observer.take(slot);
    }
    warnOfDamage(input);
    IoAnswer judged = judgeIo(observer.finish());
    WhyAnswer found{.records = judged.io.records, .serverRecords = judged.io.serverRecords};
    found.dropouts = std::move(judged.dropouts);
    found.found = found.dropouts.size();
    found.findings = findingsOf(found.dropouts);
    found.threads = summariesOf(judged.threads);
    found.limits = limitsOf(judged.io, judged.threads);
    return found;
}

// Reads the records of these slots, ascending, again: visit(slot, record, the time as it is shown,
// ticks a microsecond).
template <class Visit>
void readAgain(const TraceOptions& trace, const std::vector<uint64_t>& slots, const Visit& visit) {
    if (slots.empty()) return;
    auto wanted = slots.begin();
    Input input(trace);
    TraceClock clock;
    whileRecords(input, clock, [&](const TraceRecord& record, uint64_t slot, auto reading) {
        if (wanted == slots.end()) return false;
        if (*wanted != slot) return true;
        ++wanted;
        visit(slot, record, trace.kernelTime ? clock.kernelTime(record) : reading.time,
              clock.ticksPerMicrosecond());
        return true;
    });
}

// Keeps the dropouts of whose evidence a record is selected. Their causes are those of the whole
// trace.
void select(const Selection& selection, const TraceOptions& trace, WhyAnswer& found) {
    std::set<uint64_t> selected;
    readAgain(trace, evidenceSlots(found.dropouts),
              [&](uint64_t slot, const TraceRecord& record, Nanoseconds time, uint64_t) {
                  if (selection.contains(record, slot, time)) selected.insert(slot);
              });
    std::erase_if(found.dropouts, [&](const Dropout& dropout) {
        return std::ranges::none_of(dropout.verdict.evidence,
                                    [&](uint64_t slot) { return selected.contains(slot); });
    });
    found.findings = findingsOf(found.dropouts);
}

Status run(Options& options) {
    makeRepeatable(options.trace);
    const Selection selection = selectionOf(options.selection, options.trace);
    const CodeNames names = readCodeNames(options.trace.names);
    Input input(options.trace);
    Output out(options.output);
    WhyAnswer found = answer(input);
    found.file = input.source().name();
    if (!selection.isAll()) select(selection, options.trace, found);
    if (out.json()) {
        printWhyJson(out, found);
    } else {
        readAgain(options.trace, shownSlots(found, options.all),
                  [&](uint64_t slot, const TraceRecord& record, Nanoseconds time, uint64_t ticks) {
                      found.evidence[slot] = {record, time, static_cast<double>(ticks)};
                  });
        printWhy(out, found, names, options.all);
    }
    out.finish();
    return found.dropouts.empty() ? Status::done : Status::findings;
}

}  // namespace

Run setUpWhy(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addFlag(app, "--all", options->all, "show all findings, all their dropouts and all evidence");
    addSelectionOptions(app, options->selection);
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope why trace.raw\n"
                "  sonascope why trace.raw --from 10s --to 20s --driver OrvelHDAController\n"
                "  sonascope why --json trace.raw.zst | jq '.dropouts[].cause'\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
