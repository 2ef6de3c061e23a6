// sonascope tree: who calls whom.

#include <memory>

#include "scope/command.h"
#include "scope/event_text.h"
#include "scope/record_filter.h"
#include "scope/records.h"
#include "scope/selection_options.h"
#include "scope/trace_summary.h"
#include "scope/tree_view.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kTopOnTerminal = 30;

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    OutputOptions output;
    CallTree::Threads threads = CallTree::Threads::merged;
    std::string path;
    uint32_t depth = 24;
    double least = 0;  // percent
    std::optional<size_t> top;
};

class Sink : public CallSink {
  public:
    Sink(const Options& options, const Selection& selection)
        : tree(options.threads),
          tracker(*this),
          filter_(selection, options.trace, tracker.clock()) {}

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) override {
        const uint32_t above = parent == nullptr ? CallNode::kNone : parent->tag & ~kSelected;
        const bool selected = filter_.contains(record, call.startSlot, call.start);
        return tree.open(call, above) | (selected ? kSelected : 0);
    }

    void closed(const Call& call, const Call*, const Closing& closing) override {
        if ((call.tag & kSelected) == 0 && !filter_.containsEnd(closing)) return;
        tree.close(call, closing, call.tag & ~kSelected);
    }

    void point(const TraceRecord&, const Moment&) override {}
    void orphanEnd(const TraceRecord&, const Moment&) override {}

    void visit(const TraceRecord& record, const Moment& moment) {
        if (filter_.contains(record, moment.slot, moment.time)) summary.take(moment.time);
    }

    CallTree tree;
    TraceSummary summary;
    CallTracker tracker;

  private:
    // Of a call's tag: its start is selected. The rest is its node.
    static constexpr uint32_t kSelected = 1U << 31;

    RecordFilter filter_;
};

Status run(Options& options) {
    const std::vector<uint32_t> codes =
        options.path.empty() ? std::vector<uint32_t>() : codesNamed(options.path, "--path");
    const Selection selection = selectionOf(options.selection, options.trace);
    const CodeNames codeNames = readCodeNames(options.trace.names);
    Input input(options.trace);
    Output out(options.output);
    Sink sink(options, selection);
    trackCalls(input, sink.tracker, [&](const TraceRecord& record, const Moment& moment) {
        sink.visit(record, moment);
    });

    const TraceClock& clock = sink.tracker.clock();
    const bool forPeople = out.terminal() && !out.json();
    const TreeLimits limits{.depth = options.depth,
                            .least = options.least / 100,
                            .top = options.top.value_or(forPeople ? kTopOnTerminal : 0)};
    std::optional<JsonStream> document;
    if (out.json()) {
        Json head{{"schema", schemaName("tree")}};
        sink.summary.addTo(head, clock);
        document.emplace(out, head);
    }
    const auto tell = [&](const char* key, const char* head, const CallTree& tree) {
        const TreeView view(tree, clock, codeNames, limits);
        if (document) {
            document->beginList(key);
            view.write(*document);
            document->endList();
        } else {
            if (head != nullptr) out.line(out.styled(head, {Tone::head}));
            view.print(out);
        }
    };
    if (codes.empty()) {
        tell("tree", nullptr, sink.tree);
    } else {
        tell("callers", "Callers, the nearest first", sink.tree.callersOf(codes, options.depth));
        if (!out.json()) out.line("");
        tell("callees", "Calls inside", sink.tree.calleesOf(codes));
    }
    if (document) document->end();
    out.finish();
    warnOfDamage(input);
    warnOfAssumedDivisor(input, clock);
    return Status::done;
}

// By CallTree::Threads.
const std::vector<std::string> kThreads{"all", "thread"};

}  // namespace

Run setUpTree(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addChoice(
        app, "--by", "WHAT", "one tree over all threads, or one for each", kThreads,
        [options](size_t threads) { options->threads = static_cast<CallTree::Threads>(threads); });
    addValue(app, "--path", "EVENT", options->path, "who calls this method, and what it calls");
    addValue(app, "--depth", "N", options->depth, "levels to show; 24 if not given");
    addValue(app, "--min", "PERCENT", options->least,
             "show what has at least this percentage of the time");
    addValue(app, "--top", "N", options->top, "rows to show, 0 for all; on a terminal 30");
    addSelectionOptions(app, options->selection);
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope tree trace.raw --min 1\n"
                "  sonascope tree trace.raw --path OrvelHDAPath::enable\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
