// sonascope stats: where the time goes, by event or by whatever else calls have in common.

#include <array>
#include <bit>
#include <map>

#include "analysis/longest_calls.h"
#include "scope/event_text.h"
#include "scope/options.h"
#include "scope/records.h"
#include "scope/statistics_table.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kTopOnTerminal = 20;

struct Options {
    TraceOptions trace;
    OutputOptions output;
    GroupBy by = GroupBy::event;
    size_t sortColumn = 0;
    std::optional<size_t> top;
    std::string histogram;
    size_t longest = 0;
};

// How many calls took 0 or 1 ns, 2 or 3, 4 to 7 and so on.
class Histogram {
  public:
    void add(Nanoseconds length) {
        const auto bits = std::bit_width(static_cast<uint64_t>(length) | 1);
        ++counts_[static_cast<size_t>(bits) - 1];
    }
    const auto& counts() const { return counts_; }

  private:
    std::array<uint64_t, 64> counts_{};
};

class Sink : public CallSink {
  public:
    explicit Sink(const Options& options) : statistics(options.by), longest(options.longest) {}

    uint32_t opened(const TraceRecord& record, const Call& call, const Call*) override {
        longest.open(record, call);
        return statistics.open(record, call, true);
    }

    void closed(const Call& call, const Call*, const Closing& closing) override {
        const bool counts = statistics.close(call, closing, true);
        longest.close(call, closing, counts);
    }

    void point(const TraceRecord& record, const Moment& moment) override {
        statistics.countPoint(record, moment.thread);
    }

    void orphanEnd(const TraceRecord& record, const Moment& moment) override {
        statistics.countOrphanEnd(record, moment.thread);
    }

    CallStatistics statistics;
    LongestCalls longest;
};

Status run(const Options& options) {
    Input input(options.trace.path);
    Output out(options.output);
    Sink sink(options);
    CallTracker tracker(sink);
    uint64_t records = 0;
    trackCalls(input, tracker, [&](const TraceRecord&, const Moment&) { ++records; });

    StatisticsTable table(sink.statistics, options.by, tracker.clock());
    table.sortBy(options.sortColumn);
    const size_t top = options.top.value_or(out.terminal() && !out.json() ? kTopOnTerminal : 0);
    if (out.json()) {
        Json document{{"schema", schemaName("stats")}, {"records", records}};
        document["rows"] = table.toJson(top);
        printJson(out, document);
    } else {
        table.print(out, top);
    }
    out.finish();
    return Status::done;
}

const std::map<std::string, GroupBy> kGroupings{
    {"event", GroupBy::event},   {"driver", GroupBy::driver},
    {"thread", GroupBy::thread}, {"cpu", GroupBy::cpu},
    {"object", GroupBy::object}, {"thread,event", GroupBy::threadAndEvent}};

std::map<std::string, size_t> sortNames() {
    std::map<std::string, size_t> names;
    for (size_t i = 0; i < statisticsColumns().size(); ++i) {
        names[statisticsColumns()[i].name] = i;
    }
    return names;
}

}  // namespace

Run setUpStats(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    app.add_option("--by", options->by,
                   "group calls by event, driver, thread, cpu, object or thread,event")
        ->transform(CLI::CheckedTransformer(kGroupings).description(""))
        ->type_name("WHAT");
    app.add_option("--sort", options->sortColumn, "the column to sort by")
        ->transform(CLI::CheckedTransformer(sortNames()).description(""))
        ->type_name("COLUMN");
    app.add_option("--top", options->top, "rows to show, 0 for all; on a terminal 20")
        ->type_name("N");
    addOutputOptions(app, options->output);
    addExamples(app, "  sonascope stats trace.raw\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
