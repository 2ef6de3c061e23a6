// sonascope why: each dropout, its cause and the records that prove it.

#include "analysis/dropout_causes.h"
#include "scope/command.h"
#include "scope/event_text.h"
#include "scope/options.h"
#include "scope/records.h"
#include "scope/repeatable.h"
#include "scope/why_report.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    OutputOptions output;
    bool all = false;
};

WhyAnswer answer(Input& input) {
    IoObserver observer;
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) observer.take(slot);
    }
    warnOfDamage(input);
    IoTrace trace = observer.finish();
    const std::vector<TimedThread> threads = timeThreads(trace);
    WhyAnswer found{.records = trace.records, .serverRecords = trace.serverRecords};
    found.dropouts = judgeDropouts(trace, threads);
    found.findings = findingsOf(found.dropouts);
    found.threads = summariesOf(threads);
    found.limits = limitsOf(trace, threads);
    return found;
}

// Reads the records again that are shown.
void gatherEvidence(const Options& options, WhyAnswer& found) {
    const std::vector<uint64_t> slots = shownSlots(found, options.all);
    auto wanted = slots.begin();
    Input input(options.trace);
    TraceClock clock;
    forEachRecord(input, clock, [&](const TraceRecord& record, uint64_t slot, auto reading) {
        if (wanted == slots.end() || *wanted != slot) return;
        ++wanted;
        found.evidence[slot] = {record,
                                options.trace.kernelTime ? clock.kernelTime(record) : reading.time,
                                static_cast<double>(clock.ticksPerMicrosecond())};
    });
}

Status run(Options& options) {
    makeRepeatable(options.trace);
    const CodeNames names = readCodeNames(options.trace.names);
    Input input(options.trace);
    Output out(options.output);
    WhyAnswer found = answer(input);
    found.file = input.source().name();
    if (out.json()) {
        printWhyJson(out, found);
    } else {
        if (!found.dropouts.empty()) gatherEvidence(options, found);
        printWhy(out, found, names, options.all);
    }
    out.finish();
    return found.dropouts.empty() ? Status::done : Status::findings;
}

}  // namespace

Run setUpWhy(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    app.add_flag("--all", options->all, "show all findings, all their dropouts and all evidence");
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope why trace.raw\n"
                "  sonascope why --json trace.raw.zst | jq '.dropouts[].cause'\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
