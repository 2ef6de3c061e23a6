// sonascope diff: what changed from one trace to another, or from one window of a trace to another.

#include <cmath>
#include <memory>

#include "analysis/difference.h"
#include "analysis/event_traits.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/failure.h"
#include "scope/record_filter.h"
#include "scope/records.h"
#include "scope/selection_options.h"
#include "scope/styled_line.h"
#include "scope/table.h"
#include "scope/trace_summary.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions first;
    std::string second;
    std::string firstWindow;
    std::string secondWindow;
    SelectionOptions selection;
    OutputOptions output;
};

class Sink : public CallSink {
  public:
    Sink(const Selection& selection, const TraceOptions& trace)
        : tracker(*this), filter_(selection, trace, tracker.clock()) {}

    uint32_t opened(const TraceRecord& record, const Call& call, const Call*) override {
        return filter_.contains(record, call.startSlot, call.start) ? 1 : 0;
    }

    void closed(const Call& call, const Call*, const Closing& closing) override {
        if (call.tag == 1 || filter_.containsEnd(closing)) sample.addCall(call, closing);
    }

    void point(const TraceRecord& record, const Moment& moment) override {
        if (contains(record, moment)) sample.addPoint(codeOf(record.debugid), moment.time);
    }

    void orphanEnd(const TraceRecord&, const Moment&) override {}

    void visit(const TraceRecord& record, const Moment& moment) {
        if (!contains(record, moment)) return;
        sample.take(moment.time);
        if (isFailure(record)) sample.addFailure(codeOf(record.debugid), moment.time);
    }

    TraceSample sample;
    CallTracker tracker;

  private:
    bool contains(const TraceRecord& record, const Moment& moment) const {
        return filter_.contains(record, moment.slot, moment.time);
    }

    RecordFilter filter_;
};

// One side: a trace, or the window of one.
struct Side {
    std::string name;
    TraceSample sample;
    bool assumedDivisor;
};

Side readSide(TraceOptions trace, SelectionOptions selectionOptions, const std::string& window,
              const char* option) {
    std::string name = trace.path;
    if (!window.empty()) {
        const size_t dots = window.find("..");
        if (dots == std::string::npos) {
            throw Failure{std::string(option) + ": '" + escaped(window) +
                          "' is no window; give two times, such as 10s..20s"};
        }
        selectionOptions.from = window.substr(0, dots);
        selectionOptions.to = window.substr(dots + 2);
        name += " " + window;
    }
    const Selection selection = selectionOf(selectionOptions, trace);
    Input input(trace);
    Sink sink(selection, trace);
    trackCalls(input, sink.tracker, [&](const TraceRecord& record, const Moment& moment) {
        sink.visit(record, moment);
    });
    warnOfDamage(input);
    warnOfAssumedDivisor(input, sink.tracker.clock());
    return {name, std::move(sink.sample), sink.tracker.clock().assumedDivisor()};
}

const char* wordOf(Change change) {
    switch (change) {
        case Change::slower: return "slower";
        case Change::faster: return "faster";
        case Change::moreOften: return "more often";
        case Change::lessOften: return "less often";
        case Change::appeared: return "new";
        case Change::gone: return "gone";
        case Change::failsMore: return "fails more";
        case Change::failsLess: return "fails less";
    }
    return "";
}

// Three digits that matter.
std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", value);
    return text;
}

// "+20.3 %".
std::string percentText(double share) {
    char text[32];
    std::snprintf(text, sizeof text, "%+.1f %%", share * 100);
    return text;
}

std::string valueText(Change change, double value) {
    switch (change) {
        case Change::slower:
        case Change::faster: return durationText(std::llround(value));
        case Change::failsMore:
        case Change::failsLess: return shareText(value);
        default: return numberText(value) + "/s";
    }
}

// "+20 %", or "x 3.1" from the double on.
std::string changeText(double first, double second) {
    if (first <= 0 || second <= 0) return "";
    const double ratio = second / first;
    return ratio >= 2 ? "x " + numberText(ratio) : percentText(ratio - 1);
}

// Of a finding: never the certainty that rounding would make of it.
std::string confidenceText(double confidence) {
    return confidence > 0.9999 ? ">99.99 %" : shareText(confidence);
}

void print(Output& out, const TraceComparison& comparison, const Side& first, const Side& second,
           const CodeNames& codeNames) {
    if (comparison.differences.empty()) {
        out.line("no difference that chance does not make: " + countText(comparison.events) +
                 " events compared");
        return;
    }
    StyledLine head;
    head.add("A " + escaped(first.name) + ", B " + escaped(second.name) +
                 "; chance alone leaves 99 of 100 such lists empty",
             {Tone::dim});
    head.print(out, true, 0);
    Table table({{"explains", Align::right, 79},
                 {"change"},
                 {"A"},
                 {"B"},
                 {"B longer", Align::right, 100},
                 {"sure", Align::right, 90},
                 {"is", Align::left},
                 {"event", Align::left, 0, true}});
    for (const Difference& each : comparison.differences) {
        const bool failing = each.change == Change::failsMore;
        const bool ofTimes = each.change == Change::slower || each.change == Change::faster;
        table.add({percentText(each.explains),
                   changeText(each.first, each.second),
                   valueText(each.change, each.first),
                   valueText(each.change, each.second),
                   ofTimes ? shareText(each.superiority) : "",
                   confidenceText(each.confidence),
                   {wordOf(each.change), {failing ? Tone::failure : Tone::plain}},
                   {eventText(each.code, codeNames), {Tone::driver, hueOf(each.code)}}});
    }
    table.print(out);
}

Json toJson(const EventSample* event, const TraceSample& sample) {
    Json json;
    json["calls"] = event == nullptr ? 0 : event->calls;
    json["points"] = event == nullptr ? 0 : event->points;
    json["failures"] = event == nullptr ? 0 : event->failures;
    json["self_ns"] = event == nullptr ? 0 : event->self;
    const double seconds = static_cast<double>(std::max<Nanoseconds>(sample.span(), 1)) / 1e9;
    json["per_second"] = event == nullptr ? 0 : static_cast<double>(event->count()) / seconds;
    return json;
}

Json toJson(const Side& side) {
    return {{"name", side.name},
            {"records", side.sample.records()},
            {"span_ns", side.sample.span()},
            {"assumed_divisor", side.assumedDivisor}};
}

Json toJson(const TraceComparison& comparison, const Side& first, const Side& second,
            const CodeNames& codeNames) {
    Json document{{"schema", schemaName("diff")}, {"a", toJson(first)}, {"b", toJson(second)}};
    document["events_compared"] = comparison.events;
    document["findings"] = Json::array();
    for (const Difference& each : comparison.differences) {
        Json& entry = document["findings"].emplace_back(Json::object());
        addEvent(entry, each.code, codeNames);
        entry["change"] = wordOf(each.change);
        entry["a"] = toJson(first.sample.find(each.code), first.sample);
        entry["b"] = toJson(second.sample.find(each.code), second.sample);
        entry["a_value"] = each.first;
        entry["b_value"] = each.second;
        entry["superiority"] = each.superiority;
        entry["confidence"] = each.confidence;
        entry["explains"] = each.explains;
    }
    return document;
}

Status run(const Options& options) {
    const bool windows = !options.firstWindow.empty() && !options.secondWindow.empty();
    if (options.second.empty() && !windows) {
        throw Failure{"two traces are compared, or two windows of one: give B, or --a and --b"};
    }
    const CodeNames codeNames = readCodeNames(options.first.names);
    Output out(options.output);
    TraceOptions other = options.first;
    if (!options.second.empty()) other.path = options.second;
    const Side first = readSide(options.first, options.selection, options.firstWindow, "--a");
    const Side second = readSide(other, options.selection, options.secondWindow, "--b");
    const TraceComparison comparison = compareTraces(first.sample, second.sample);
    if (out.json()) {
        printJson(out, toJson(comparison, first, second, codeNames));
    } else {
        print(out, comparison, first, second, codeNames);
    }
    out.finish();
    return comparison.differences.empty() ? Status::done : Status::findings;
}

}  // namespace

Run setUpDiff(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->first);
    addOperand(app, Operand::optional, "OTHER", options->second, "the trace to compare with");
    addValue(app, "--a", "WINDOW", options->firstWindow, "the part of FILE, as in 10s..20s");
    addValue(app, "--b", "WINDOW", options->secondWindow, "the part of OTHER, or else of FILE");
    addSelectionOptions(app, options->selection);
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope diff yesterday.raw today.raw\n"
                "  sonascope diff trace.raw --a 0s..60s --b 60s..120s\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
