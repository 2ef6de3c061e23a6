// sonascope lines: the records as lines.

#include "scope/command.h"
#include "scope/options.h"
#include "scope/output.h"
#include "scope/records.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    OutputOptions output;
};

Status run(const Options& options) {
    Input input(options.trace.path);
    Output out(options.output);
    TraceClock clock;
    forEachRecord(input, clock, [&](const TraceRecord& record, uint64_t, auto reading) {
        out.line(
            timeText(reading.time) + "  " +
            out.styled(codeText(codeOf(record.debugid)), {Tone::driver, hueOf(record.debugid)}));
    });
    out.finish();
    return Status::done;
}

}  // namespace

Run setUpLines(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addOutputOptions(app, options->output);
    addExamples(app, "  sonascope lines trace.raw\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
