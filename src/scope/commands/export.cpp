// sonascope export: a trace as data for other people's tools.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <thread>

#include "analysis/nearest.h"
#include "analysis/spelled.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/export/destination.h"
#include "scope/export/feed.h"
#include "scope/export/parallel_rows.h"
#include "scope/export/partition.h"
#include "scope/export/sqlite.h"
#include "scope/failure.h"
#include "scope/repeatable.h"
#include "scope/selection_options.h"
#include "scope/sorted_search.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    std::vector<std::string> traces;
    TraceOptions trace;  // its path is that of the one being read
    SelectionOptions selection;
    bool sorted = false;
    const FormatEntry* format = nullptr;
    std::string path;  // empty: standard output
    bool force = false;
    What what = What::records;
    Waiting waiting = Waiting::frame;
    PartitionOptions partition;
    unsigned jobs = std::thread::hardware_concurrency();
};

std::vector<std::string_view> formatNames() {
    std::vector<std::string_view> names;
    for (const FormatEntry& format : formats()) names.emplace_back(format.name);
    return names;
}

FormatOptions formatOptions(const Options& options, const Input& input, const CodeNames& names) {
    return {.file = input.source().name(),
            .what = options.what,
            .waiting = options.waiting,
            .names = &names};
}

void exportText(const Options& options, const std::string& path, const Selection& selection,
                const CodeNames& names) {
    Input input(options.trace);
    Destination destination(path, options.force, input.source().file());
    TextOutput out(destination.sink());
    const auto make = [&](TextOutput& to) {
        return options.format->make(formatOptions(options, input, names), to);
    };
    const bool withCalls = options.format->readsCalls(options.what);
    if (options.sorted) searchTime(input, selection, options.trace);
    // Of a pipe, which may pause, each row comes as soon as its record has.
    const bool inBatches = !withCalls && options.jobs > 1 && input.source().file().repeatable();
    std::unique_ptr<Format> format;
    if (inBatches) {
        format = std::make_unique<ParallelRows>(options.jobs, make, out);
    } else {
        format = make(out);
    }
    if (options.format->readsTwice) feedAhead(selection, options.trace, *format);
    feed(input, selection, options.trace, withCalls, *format);
    out.handOver();
    destination.finish();
}

void exportPartitions(Options& options, const CodeNames& names) {
    if (options.path.empty()) throw Failure{"--partition needs a folder; give it with -o"};
    if (options.format->isPicture || options.format->make == nullptr) {
        throw Failure{"--partition is for json and csv"};
    }
    for (const std::string& trace : options.traces) {
        options.trace.path = trace;
        const Selection selection = selectionOf(options.selection, options.trace);
        const std::string path =
            partitionPath(options.path, trace, options.partition, options.format->name);
        exportText(options, path, selection, names);
    }
}

void exportDatabase(Options& options, const Selection& selection, const CodeNames& names) {
    if (options.path.empty()) throw Failure{"a database is a file; give it a name with -o"};
    makeRepeatable(options.trace);
    Input input(options.trace);
    NewFile file(options.path, options.force, input.source().file());
    const auto format = makeSqlite(formatOptions(options, input, names), options.trace,
                                   file.written(), escaped(options.path));
    feed(input, selection, options.trace, true, *format);
    file.takeWritten();
    file.keep();
}

Status run(Options& options) {
    if (options.format == nullptr) {
        throw Failure{"--to FORMAT is missing; see sonascope export --help"};
    }
    if (options.sorted && options.format->readsCalls(options.what)) {
        throw Failure{
            "--sorted is for json and csv of records: calls may begin long before --from"};
    }
    const CodeNames names = readCodeNames(options.trace.names);
    if (options.partition.wanted) {
        exportPartitions(options, names);
        return Status::done;
    }
    if (options.traces.size() > 1) throw Failure{"several files need --partition"};
    options.trace.path = options.traces.front();
    if (options.format->readsTwice) makeRepeatable(options.trace);
    const Selection selection = selectionOf(options.selection, options.trace);
    if (options.format->make == nullptr) {
        exportDatabase(options, selection, names);
    } else {
        exportText(options, options.path, selection, names);
    }
    return Status::done;
}

// Both the format and the selection's end are --to: each time is the one, each name the other.
void takeTo(Options& options, const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        const auto found = std::ranges::find(formats(), value, &FormatEntry::name);
        if (found != formats().end()) {
            options.format = &*found;
        } else if (spelledTime(value)) {
            options.selection.to = value;
        } else {
            throw Failure{"--to: '" + escaped(value) + "' is no format" +
                          nearestPhrase(value, formatNames()) + "; see sonascope export --help"};
        }
    }
}

std::string formatList() {
    std::string list = "Formats:\n";
    for (const FormatEntry& format : formats()) {
        std::string name = format.name;
        name.resize(12, ' ');
        list += "  " + name + format.summary + "\n";
    }
    return list;
}

}  // namespace

Run setUpExport(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    app.remove_option(app.get_option("FILE"));
    addOperands(app, Operand::required, "FILE", options->traces,
                "a raw file, packed or not, or - for standard input; several with --partition");
    addValue(app, "-o,--output", "NEW", options->path,
             "the file to write; standard output if not given");
    addFlag(app, "--force", options->force, "write over a file that exists");
    addChoice(app, "--what", "ROWS", "rows of json and csv", {"records", "calls", "stats"},
              [options](size_t place) { options->what = static_cast<What>(place); });
    addChoice(app, "--waiting", "HOW", "in folded, time in which an I/O thread waits",
              {"frame", "omit"},
              [options](size_t place) { options->waiting = static_cast<Waiting>(place); });
    app.add_option("-j,--jobs", options->jobs,
                   "threads that make rows of records; if not given, one for each processor")
        ->type_name("N")
        ->check(CLI::Range(1, 1024));
    addFlag(app, "--partition", options->partition.wanted,
            "write json or csv of each file into folders host=.../date=... of the folder NEW");
    addValue(app, "--host", "HOST", options->partition.host,
             "of --partition; if not given, the file's name up to a dot");
    addValue(app, "--date", "DAY", options->partition.date,
             "of --partition; if not given, the day on which the file was written");
    addSelectionOptions(app, options->selection);
    addSortedOption(app, options->sorted);
    app.remove_option(app.get_option("--to"));
    app.add_option_function<std::vector<std::string>>(
           "--to", [options](const auto& values) { takeTo(*options, values); },
           "the format, see below; or, given again, before this time")
        ->type_name("FORMAT")
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.footer(formatList() +
               "\nExamples:\n"
               "  sonascope export trace.raw --to json | jq -r .text\n"
               "  sonascope export trace.raw --to csv --what calls -o calls.csv\n"
               "  sonascope export trace.raw --to sqlite -o trace.db\n"
               "  sonascope export fleet/*.raw --to json --partition -o table\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
