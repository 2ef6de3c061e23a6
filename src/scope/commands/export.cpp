// sonascope export: a trace as data for other people's tools.

#include <algorithm>
#include <map>

#include "analysis/nearest.h"
#include "analysis/spelled.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/export/destination.h"
#include "scope/export/feed.h"
#include "scope/export/sqlite.h"
#include "scope/failure.h"
#include "scope/repeatable.h"
#include "scope/selection_options.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    const FormatEntry* format = nullptr;
    std::string path;  // empty: standard output
    bool force = false;
    What what = What::records;
    Waiting waiting = Waiting::frame;
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

void exportText(const Options& options, const Selection& selection, const CodeNames& names) {
    Input input(options.trace.path);
    Destination destination(options.path, options.force, input.source().file());
    TextOutput out(destination.sink());
    const auto format = options.format->make(formatOptions(options, input, names), out);
    feed(input, selection, options.trace, options.format->readsCalls(options.what), *format);
    out.handOver();
    destination.finish();
}

void exportDatabase(Options& options, const Selection& selection, const CodeNames& names) {
    if (options.path.empty()) throw Failure{"a database is a file; give it a name with -o"};
    options.trace.path = repeatablePath(options.trace.path);
    Input input(options.trace.path);
    NewFile file(options.path, options.force, input.source().file());
    const auto format = makeSqlite(formatOptions(options, input, names), options.trace.path,
                                   file.temporary(), escaped(options.path));
    feed(input, selection, options.trace, true, *format);
    file.keep();
}

Status run(Options& options) {
    if (options.format == nullptr) {
        throw Failure{"--to FORMAT is missing; see sonascope export --help"};
    }
    const Selection selection = selectionOf(options.selection, options.trace);
    const CodeNames names = readCodeNames(options.trace.names);
    if (options.format->make == nullptr) {
        exportDatabase(options, selection, names);
    } else {
        exportText(options, selection, names);
    }
    return Status::done;
}

const std::map<std::string, What> kWhat{
    {"records", What::records}, {"calls", What::calls}, {"stats", What::stats}};
const std::map<std::string, Waiting> kWaiting{{"frame", Waiting::frame}, {"omit", Waiting::omit}};

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
    app.add_option("-o,--output", options->path, "the file to write; standard output if not given")
        ->type_name("NEW");
    app.add_flag("--force", options->force, "write over a file that exists");
    app.add_option("--what", options->what, "rows of json and csv: records, calls or stats")
        ->transform(CLI::CheckedTransformer(kWhat).description(""))
        ->type_name("ROWS");
    app.add_option("--waiting", options->waiting,
                   "in folded, time in which an I/O thread waits: frame, or omit it")
        ->transform(CLI::CheckedTransformer(kWaiting).description(""))
        ->type_name("HOW");
    addSelectionOptions(app, options->selection);
    app.remove_option(app.get_option("--to"));
    app.add_option_function<std::vector<std::string>>(
           "--to", [options](const auto& values) { takeTo(*options, values); },
           "the format, see below; or, given again, before this time")
        ->type_name("FORMAT")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.footer(formatList() +
               "\nExamples:\n"
               "  sonascope export trace.raw --to json | jq -r .text\n"
               "  sonascope export trace.raw --to csv --what calls -o calls.csv\n"
               "  sonascope export trace.raw --to sqlite -o trace.db\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
