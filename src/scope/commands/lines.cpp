// sonascope lines: the records as lines.

#include <memory>

#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/line_view.h"
#include "scope/plain_lines.h"
#include "scope/selection_options.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    OutputOptions output;
    bool plain = false;
    PlainOptions columns;
    bool wrap = false;
};

Status run(Options& options) {
    if (options.plain && options.output.json) {
        throw Failure{"--plain and --json do not go together; give one of them"};
    }
    const Selection selection = selectionOf(options.selection, options.trace);
    // sonaprobe -r prints whatever it is given.
    Input input(options.trace, options.plain ? Accept::anything : Accept::traces);
    Output out(options.output);
    if (options.plain) {
        printPlainLines(input, selection, options.trace, options.columns, out);
    } else {
        printLines(input, selection, options.trace, options.wrap, out);
    }
    return Status::done;
}

}  // namespace

Run setUpLines(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addFlag(app, "--wrap", options->wrap, "wrap lines at the terminal's width, do not cut them");
    addSelectionOptions(app, options->selection);
    addOutputOptions(app, options->output);
    CLI::Option* const plain =
        addFlag(app, "--plain", options->plain, "print just what sonaprobe -r prints");
    addPlainOptions(app, options->columns, plain);
    addExamples(app,
                "  sonascope lines trace.raw --from 12.3s --to 12.5s\n"
                "  sonascope lines trace.raw --failed --driver OrvelHDADriver\n"
                "  sonascope lines trace.raw --plain -k -H\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
