// sonascope stats: where the time goes, by event or by whatever else calls have in common.

#include <memory>

#include "analysis/event_traits.h"
#include "scope/call_report.h"
#include "scope/command.h"
#include "scope/record_filter.h"
#include "scope/records.h"
#include "scope/selection_options.h"
#include "scope/statistics_table.h"
#include "scope/trace_summary.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kTopOnTerminal = 20;

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    OutputOptions output;
    GroupBy by = GroupBy::event;
    size_t sortColumn = 0;
    std::optional<size_t> top;
    std::string histogram;
    size_t longest = 0;
};

class Sink {
  public:
    Sink(const Options& options, const Selection& selection)
        : statistics(options.by),
          tracker(*this),
          filter_(selection, options.trace, tracker.clock()) {
        if (options.longest > 0) longest.emplace(options.longest);
        if (!options.histogram.empty()) {
            histogram.emplace(codesNamed(options.histogram, "--histogram"));
        }
    }

    uint32_t opened(const TraceRecord& record, const Call& call, const Call*) {
        if (longest) longest->open(record, call, filter_.shown(record, call.start));
        return statistics.open(record, call, filter_.contains(record, call.startSlot, call.start));
    }

    void closed(const Call& call, const Call*, const Closing& closing) {
        const bool counts = statistics.close(call, closing, filter_.containsEnd(closing));
        if (longest) longest->close(call, closing, counts);
        if (histogram && counts) histogram->add(call, closing);
    }

    void point(const TraceRecord& record, const Moment& moment) {
        if (contains(record, moment)) statistics.countPoint(record, moment.thread);
    }

    void orphanEnd(const TraceRecord& record, const Moment& moment) {
        if (contains(record, moment)) statistics.countOrphanEnd(record, moment.thread);
    }

    void visit(const TraceRecord& record, const Moment& moment) {
        if (!contains(record, moment)) return;
        summary.take(moment.time);
        if (isFailure(record)) statistics.countFailure(record, moment.thread);
    }

    CallStatistics statistics;
    std::optional<LongestCalls> longest;
    std::optional<Histogram> histogram;
    TraceSummary summary;
    CallTrackerOf<Sink> tracker;

  private:
    bool contains(const TraceRecord& record, const Moment& moment) const {
        return filter_.contains(record, moment.slot, moment.time);
    }

    RecordFilter filter_;
};

Status run(Options& options) {
    const Selection selection = selectionOf(options.selection, options.trace);
    const CodeNames codeNames = readCodeNames(options.trace.names);
    Input input(options.trace);
    Output out(options.output);
    Sink sink(options, selection);
    trackCalls(input, sink.tracker, [&](const TraceRecord& record, const Moment& moment) {
        sink.visit(record, moment);
    });
    const TraceClock& clock = sink.tracker.clock();
    StatisticsTable table(sink.statistics, options.by, clock, codeNames);
    table.sortBy(options.sortColumn);
    const CallReport report(clock, codeNames);

    if (out.json()) {
        Json head{{"schema", schemaName("stats")}};
        sink.summary.addTo(head, clock);
        head["percentile_error"] = sink.statistics.isSketch() ? DurationSketch::kError : 0.0;
        JsonStream document(out, head);
        document.beginList("rows");
        table.write(document, options.top.value_or(0));
        document.endList();
        if (sink.histogram) document.member("histogram", report.toJson(*sink.histogram));
        if (sink.longest) document.member("longest", report.toJson(sink.longest->sorted()));
        document.end();
    } else {
        table.print(out, options.top.value_or(out.terminal() ? kTopOnTerminal : 0));
        if (sink.histogram) report.print(out, *sink.histogram);
        if (sink.longest) report.print(out, sink.longest->sorted());
        if (sink.statistics.isSketch()) {
            out.line(out.styled("percentiles are within 0.2 % of the exact ones", {Tone::dim}));
        }
    }
    out.finish();
    warnOfDamage(input);
    warnOfAssumedDivisor(input, clock);
    return Status::done;
}

// By GroupBy.
const std::vector<std::string> kGroupings{"event", "driver", "class",       "thread",
                                          "cpu",   "object", "thread,event"};

std::vector<std::string> columnNames() {
    std::vector<std::string> names;
    for (const StatisticsColumn& column : statisticsColumns()) names.emplace_back(column.name);
    return names;
}

}  // namespace

Run setUpStats(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addChoice(app, "--by", "WHAT", "what calls are grouped by", kGroupings,
              [options](size_t by) { options->by = static_cast<GroupBy>(by); });
    addChoice(app, "--sort", "COLUMN", "the column to sort by, the largest first", columnNames(),
              [options](size_t column) { options->sortColumn = column; });
    addValue(app, "--top", "N", options->top, "rows to show, 0 for all; on a terminal 20");
    addValue(app, "--histogram", "EVENT", options->histogram,
             "add how the times of this event's calls spread");
    addValue(app, "--longest", "N", options->longest, "add the longest calls with their lines");
    addSelectionOptions(app, options->selection);
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope stats trace.raw\n"
                "  sonascope stats trace.raw --by thread,event --sort max\n"
                "  sonascope stats trace.raw --histogram IOCycle --longest 5\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
