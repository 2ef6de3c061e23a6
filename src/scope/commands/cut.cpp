// sonascope cut: a part of a trace as a raw file of its own.

#include <memory>

#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/json.h"
#include "scope/new_file.h"
#include "scope/records.h"
#include "scope/selection_options.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    SelectionOptions selection;
    NewFileOptions newFile;
    OutputOptions output;
};

// What was kept, for the message.
struct Kept {
    uint64_t records = 0;
    Nanoseconds first = 0;
    Nanoseconds last = 0;
};

// Writes records, each after the divisor that is in force for it.
class Cutter {
  public:
    explicit Cutter(NewFile& file) : file_(&file) {}

    void put(const TraceRecord& record, uint64_t divisor) {
        if (divisor != divisor_) {
            TraceRecord slot{};
            slot.timestamp = divisor_ = divisor;
            slot.debugid = kDivisorMarker;
            file_->write(std::as_bytes(std::span(&slot, 1)));
        }
        file_->write(std::as_bytes(std::span(&record, 1)));
    }

  private:
    NewFile* file_;
    uint64_t divisor_ = 0;
};

void print(const OutputOptions& options, const std::string& path, const Kept& kept) {
    Output out(options);
    if (out.json()) {
        printJson(out, {{"schema", schemaName("cut")},
                        {"file", path},
                        {"records", kept.records},
                        {"first_ns", kept.first},
                        {"last_ns", kept.last}});
    } else {
        out.line(escaped(path) + ": " + countText(kept.records) + " records, from " +
                 timeText(kept.first) + " to " + timeText(kept.last));
    }
    out.finish();
}

Status run(Options& options) {
    const Selection selection = selectionOf(options.selection, options.trace);
    Input input(options.trace);
    NewFile file(options.newFile.path, options.newFile.force, input.source().file());
    Cutter cutter(file);
    TraceClock clock;
    Kept kept;
    forEachRecord(input, clock, [&](const TraceRecord& record, uint64_t slot, auto reading) {
        const Nanoseconds time = options.trace.kernelTime ? clock.kernelTime(record) : reading.time;
        if (!selection.contains(record, slot, time)) return;
        cutter.put(record, clock.ticksPerMicrosecond());
        if (kept.records++ == 0) kept.first = time;
        kept.last = time;
    });
    warnOfDamage(input);
    warnOfAssumedDivisor(input, clock);
    if (kept.records == 0) {
        throw Failure{input.source().name() + ": no record is selected; " +
                      escaped(options.newFile.path) + " is not written. The trace ends at " +
                      timeText(clock.latest())};
    }
    file.keep();
    print(options.output, options.newFile.path, kept);
    return Status::done;
}

}  // namespace

Run setUpCut(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addNewFileOptions(app, options->newFile);
    addSelectionOptions(app, options->selection);
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope cut trace.raw --from 12.3s --to 12.5s -o part.raw\n"
                "  sonascope cut trace.raw.zst --around dropout=20ms -o dropouts.raw\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
