// sonascope export: a trace as data for other people's tools.

#include <algorithm>
#include <map>

#include "scope/command.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/export/destination.h"
#include "scope/export/feed.h"
#include "scope/failure.h"
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

Status run(Options& options) {
    const Selection selection = selectionOf(options.selection, options.trace);
    const CodeNames names = readCodeNames(options.trace.names);
    Input input(options.trace.path);
    Destination destination(options.path, options.force, input.source().file());
    TextOutput out(destination.sink());
    const auto format = options.format->make({.file = input.source().name(),
                                              .what = options.what,
                                              .waiting = options.waiting,
                                              .names = &names},
                                             out);
    feed(input, selection, options.trace, options.format->readsCalls(options.what), *format);
    out.handOver();
    destination.finish();
    return Status::done;
}

const std::map<std::string, What> kWhat{
    {"records", What::records}, {"calls", What::calls}, {"stats", What::stats}};
const std::map<std::string, Waiting> kWaiting{{"frame", Waiting::frame}, {"omit", Waiting::omit}};

const FormatEntry* formatNamed(const std::string& name) {
    const auto found = std::ranges::find(formats(), name, &FormatEntry::name);
    if (found != formats().end()) return &*found;
    std::string all;
    for (const FormatEntry& format : formats())
        all += (all.empty() ? "" : ", ") + std::string(format.name);
    throw Failure{"--to: '" + escaped(name) + "' is none of " + all};
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
    app.add_option_function<std::string>(
           "--to", [options](const std::string& name) { options->format = formatNamed(name); },
           "the format; see below")
        ->required()
        ->type_name("FORMAT");
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
    app.footer(formatList() +
               "\nExamples:\n"
               "  sonascope export trace.raw --to json | jq -r .text\n"
               "  sonascope export trace.raw --to csv --what calls -o calls.csv\n"
               "  sonascope export trace.raw --to sqlite -o trace.db\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
