// The library's line printer over an input.

#include "scope/plain_lines.h"

#include "analysis/slot.h"
#include "lines/line_printer.h"
#include "registry/audio_class_registry.h"
#include "scope/event_text.h"
#include "scope/selection_options.h"
#include "scope/sorted_search.h"

namespace sonaprobe::scope {

namespace {

constexpr const char* kGroup = "Columns of --plain";

struct Flag {
    const char* names;
    uint32_t LineOptions::*field;
    uint32_t value;
    const char* help;
};
constexpr Flag kFlags[] = {
    {"-c,--codes", &LineOptions::showCodes, 1, "with the code"},
    {"-C,--show-cpu", &LineOptions::showCpu, 1, "with the processor"},
    {"-H,--nothread", &LineOptions::showThread, 0, "without the thread"},
    {"-g,--nogroup", &LineOptions::showGroup, 0, "without the driver"},
    {"-m,--nomethod", &LineOptions::showMethod, 0, "without the method"},
    {"-u,--noptr", &LineOptions::showPointer, 0, "without the object"},
    {"-i,--indentOff", &LineOptions::indent, 0, "without indentation"},
    {"-S,--nosep", &LineOptions::noSeparator, 1, "without blanks between name and text"},
    {"-B,--basic", &LineOptions::basicFormat, 1, "the basic layout"},
    {"-A,--HAL", &LineOptions::includeHAL, 1, "the audio server's records too"},
    {"-v,--verbose", &LineOptions::verbose, 1, "texts that are printed under -v alone too"},
};

LineOptions lineOptionsOf(const PlainOptions& options) {
    LineOptions line = options.line;
    if (options.noTime) line.timeMode = 0;
    if (options.kernelTime) line.timeMode = kKernelTime;
    if (options.all || !options.decodeFile.empty()) line.printMask |= kPrintAll;
    for (const std::string& name : options.without) {
        line.filterOut.insert(AudioClassRegistry::ResolveClassArgument(name.c_str()));
    }
    for (const std::string& name : options.only) {
        line.filterAllExcept.insert(AudioClassRegistry::ResolveClassArgument(name.c_str()));
    }
    return line;
}

}  // namespace

void addPlainOptions(CLI::App& app, PlainOptions& options, CLI::Option* plain) {
    putBelow(kGroup, plain);
    const auto place = [&](CLI::Option* option) { letNeed(putBelow(kGroup, option), plain); };
    for (const Flag& flag : kFlags) {
        uint32_t& field = options.line.*flag.field;
        const auto set = [&field, value = flag.value] { field = value; };
        place(addFlag(app, flag.names, set, flag.help));
    }
    place(addSortedOption(app, options.sorted));
    place(addFlag(app, "-s,--nostamp", options.noTime, "without the time"));
    place(addFlag(app, "-k,--kernel", options.kernelTime, "the kernel's time"));
    place(addFlag(app, "-a,--all", options.all, "codes of all kinds, not audio codes alone"));
    place(addValue(app, "-d,--decode", "FILE", options.decodeFile,
                   "names of other codes; implies -a"));
    place(addValues(app, "-F,--filter-out", "CLASS", options.without, "without this class"));
    place(addValues(app, "-X,--filter-all-except", "CLASS", options.only, "this class alone"));
}

void printPlainLines(Input& input, const Selection& selection, const TraceOptions& trace,
                     const PlainOptions& options, Output& out) {
    const CodeNames names = readCodeNames(options.decodeFile);
    OutputLine line({.write =
                         [](void* output, const char* text, size_t length) {
                             static_cast<Output*>(output)->write({text, length});
                         },
                     .context = &out});
    LinePrinter printer(lineOptionsOf(options), line,
                        options.decodeFile.empty() ? NameLookup{} : names.lookup());
    TraceClock clock;
    if (options.sorted) searchTime(input, selection, trace);
    line.gather();
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        uint64_t number = input.firstSlot();
        for (const TraceRecord& slot : slots) {
            const uint64_t at = number++;
            if (slot.debugid == kDivisorMarker) {
                printer.setTicksPerMicrosecond(static_cast<double>(slot.timestamp));
                clock.takeDivisor(slot.timestamp);
            } else if (slot.debugid != kInvalidMarker) {
                // sonaprobe knows no empty slots: to it they are records like others.
                if (selection.isAll()) {
                    printer.print(slot);
                    continue;
                }
                if (kindOf(slot) != SlotKind::record) continue;
                const Nanoseconds time = clock.read(slot).time;
                if (selection.contains(slot, at,
                                       trace.kernelTime ? clock.kernelTime(slot) : time)) {
                    printer.print(slot);
                }
            }
        }
        if (out.terminal()) line.handOver();
    }
    line.handOver();
    out.finish();
    confirmSorted(input, clock);
    warnOfDamage(input);
}

}  // namespace sonaprobe::scope
