// sonascope export: a trace as data for other people's tools.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "analysis/nearest.h"
#include "analysis/spelled.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/export/destination.h"
#include "scope/export/feed.h"
#include "scope/export/partition.h"
#include "scope/export/sqlite.h"
#include "scope/failure.h"
#include "scope/repeatable.h"
#include "scope/selection_options.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    std::vector<std::string> traces;
    TraceOptions trace;  // its path is that of the one being read
    SelectionOptions selection;
    const FormatEntry* format = nullptr;
    std::string path;  // empty: standard output
    bool force = false;
    What what = What::records;
    Waiting waiting = Waiting::frame;
    PartitionOptions partition;
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
    const auto format = options.format->make(formatOptions(options, input, names), out);
    feed(input, selection, options.trace, options.format->readsCalls(options.what), *format);
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
    const CodeNames names = readCodeNames(options.trace.names);
    if (options.partition.wanted) {
        exportPartitions(options, names);
        return Status::done;
    }
    if (options.traces.size() > 1) throw Failure{"several files need --partition"};
    options.trace.path = options.traces.front();
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
    addFlag(app, "--partition", options->partition.wanted,
            "write json or csv of each file into folders host=.../date=... of the folder NEW");
    addValue(app, "--host", "HOST", options->partition.host,
             "of --partition; if not given, the file's name up to a dot");
    addValue(app, "--date", "DAY", options->partition.date,
             "of --partition; if not given, the day on which the file was written");
    addSelectionOptions(app, options->selection);
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
