// sonascope repair: a new file without what is broken.

#include <memory>

#include "analysis/slot_repair.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/finding_text.h"
#include "scope/found_slots.h"
#include "scope/new_file.h"
#include "scope/options.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    std::string path;
    uint64_t mostGrowth = ByteSource::kMostGrowth;
    NewFileOptions newFile;
    OutputOptions output;
};

std::string tellRepair(const Finding& finding) {
    const char* const repair = repairOf(finding.kind);
    return meaningOf(finding) + "; " + (repair != nullptr ? repair : "stays as it is");
}

void print(Output& out, const Options& options, const SlotRepair& repair) {
    const SlotCheck& slots = repair.slots();
    printFindings(out, slots.findings(), tellRepair);
    out.line(escaped(options.newFile.path) + ": " + countText(repair.kept()) + " of " +
             countText(slots.slots()) + " slots" +
             (slots.findings().none() ? ", all of a sound file" : ""));
}

void printAsJson(Output& out, const Options& options, const SlotRepair& repair) {
    const SlotCheck& slots = repair.slots();
    Json document{{"schema", schemaName("repair")},
                  {"file", escaped(options.path)},
                  {"output", escaped(options.newFile.path)},
                  {"slots", slots.slots()},
                  {"kept", repair.kept()},
                  {"findings", Json::array()}};
    for (const Finding& finding : slots.findings().all()) {
        Json entry = jsonOf(finding);
        entry["repaired"] = repairOf(finding.kind) != nullptr;
        entry["meaning"] = tellRepair(finding);
        document["findings"].push_back(entry);
    }
    printJson(out, document);
}

Status run(const Options& options) {
    FoundSlots input(options.path, options.mostGrowth);
    NewFile file(options.newFile.path, options.newFile.force, input.source().file());
    SlotRepair repair;
    const auto take = [&](const Found& found) {
        if (repair.take(found)) file.write(std::as_bytes(std::span(&found.slot, 1)));
    };
    input.forEach(take);
    const std::string otherKind = input.otherKind();
    if (!otherKind.empty()) {
        throw Failure{input.source().name() + ": no trace: " + otherKind + "; nothing is written"};
    }
    const char* const damage = input.source().damage();
    if (damage != nullptr) warn(input.source().name() + ": " + damage);
    while (repair.finish()) {
        FoundSlots kept(file.written());
        file.startOver();
        kept.forEach(take);
    }
    file.keep();

    Output out(options.output);
    out.json() ? printAsJson(out, options, repair) : print(out, options, repair);
    out.finish();
    return Status::done;
}

}  // namespace

Run setUpRepair(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addOperand(app, Operand::required, "FILE", options->path,
               "a raw file, packed or not, or - for standard input");
    addGrowthOption(app, options->mostGrowth);
    addNewFileOptions(app, options->newFile);
    addOutputOptions(app, options->output);
    addExamples(app, "  sonascope repair broken.raw -o trace.raw\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
