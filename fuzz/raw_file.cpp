// Raw trace files under any options: whatever the bytes are, each slot prints at most one line.
//
// The first 64 bytes of an input are the options, the rest is the file.

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz.h"
#include "lines/code_names.h"
#include "lines/line_printer.h"
#include "rawfile/slot_reader.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

constexpr size_t kOptionBytes = 64;

// What came out, once it counts.
struct Printed {
    bool counts = false;
    size_t lines = 0;
    char last = '\n';
};

void count(void* context, const char* text, size_t size) {
    Printed& printed = *static_cast<Printed*>(context);
    if (!printed.counts) return;
    printed.lines += static_cast<size_t>(std::count(text, text + size, '\n'));
    if (size > 0) printed.last = text[size - 1];
}

const CodeNames& codeNames() {
    static const CodeNames names = [] {
        constexpr char kLines[] =
            "0x01300004 fault\n0x01300008\tpage fault\n0x21040000 HAL\n0 nothing\n0x0130000C\n"
            "0x05243014 a name with seven blanks in it  and more than sixty-three characters on "
            "the line\n0xFFFFFFFC last";
        CodeNames result;
        result.take(kLines, sizeof kLines - 1);
        result.endFile();
        return result;
    }();
    return names;
}

// Starts without their ends.
void nest(LinePrinter& printer, uint64_t depth) {
    TraceRecord start{};
    start.debugid = 0x05245C0D;
    for (; depth > 0; --depth) printer.print(start);
}

// A line of other output among those that are gathered, as long as that.
void fill(OutputLine& line, uint64_t length) {
    line.blanks(length - 1);
    line.end();
}

// A file, or a pipe where it fits into one.
int fileOf(std::span<const uint8_t> bytes, bool pipeWanted) {
    constexpr size_t kPipeRoom = 65536;
    const auto length = static_cast<ssize_t>(bytes.size());
    int ends[2];
    if (pipeWanted && bytes.size() <= kPipeRoom) {
        require(pipe(ends) == 0, "there is a pipe");
        require(write(ends[1], bytes.data(), bytes.size()) == length, "the pipe takes it");
        close(ends[1]);
        return ends[0];
    }
    const int file = memfd_create("trace", MFD_CLOEXEC);
    require(pwrite(file, bytes.data(), bytes.size(), 0) == length, "the file takes it");
    return file;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto optionBytes = input.bytes(kOptionBytes);
    const auto bytes = input.rest();
    Input choice(optionBytes.data(), optionBytes.size());

    const auto flags = choice.number<uint32_t>();
    unsigned bit = 0;
    const auto next = [&] { return flags >> bit++ & 1; };
    LineOptions options;
    options.timeMode = next() | next() << 1;
    for (uint32_t* field :
         {&options.verbose, &options.showThread, &options.showGroup, &options.showMethod,
          &options.showPointer, &options.indent, &options.showCodes, &options.showCpu,
          &options.basicFormat, &options.noSeparator, &options.includeHAL, &options.showHistoric}) {
        *field = next();
    }
    if (next() != 0) options.printMask |= kPrintAll;
    const bool named = next() != 0;
    const bool out = next() != 0;
    const bool except = next() != 0;
    const bool gathered = next() != 0;
    const auto outOf = choice.number<uint64_t>();
    const auto exceptOf = choice.number<uint64_t>();
    for (uint32_t id = 0; id < 64; ++id) {
        if (out && (outOf >> id & 1) != 0) options.filterOut.insert(id);
        if (except && (exceptOf >> id & 1) != 0) options.filterAllExcept.insert(id);
    }

    Printed printed;
    OutputLine line({.write = count, .context = &printed});
    if (gathered) line.gather();
    LinePrinter printer(options, line, named ? codeNames().lookup() : NameLookup{});
    printer.setTicksPerMicrosecond(static_cast<double>(choice.number<uint64_t>()));
    // Lines that wait and an indentation that fills what they leave, so that the buffer ends within
    // the next line or just before it. Rare, for the indentation costs as much as its lines.
    const auto end = choice.number<uint16_t>();
    const bool nearEnd = gathered && end >= 0xFF00;
    if (nearEnd) {
        const size_t columns = size_t{8} * (end >> 4 & 0xFU);  // before the indentation
        nest(printer, OutputLine::kFillRoom - OutputLine::kGathered - columns);
        line.handOver();
        fill(line, OutputLine::kGathered - 1 - (end & 0xFU));
    }
    printed.counts = true;

    const bool pipeWanted = optionBytes.size() == kOptionBytes && (optionBytes.back() & 1) != 0;
    const int file = fileOf(bytes, pipeWanted);
    SlotReader reader(file);
    for (auto slots = reader.next(); !slots.empty(); slots = reader.next()) {
        for (const TraceRecord& slot : slots) printer.takeSlot(slot);
    }
    close(file);
    line.handOver();

    // Texts that print characters print any byte, a line end among them.
    if (std::ranges::find(bytes, uint8_t{'\n'}) == bytes.end()) {
        require(printed.lines <= bytes.size() / sizeof(TraceRecord) + nearEnd,
                "a slot prints one line");
    }
    require(printed.last == '\n', "all lines are whole");
    require(reader.cutBytes() == bytes.size() % sizeof(TraceRecord), "the rest is a cut slot");
    return 0;
}
