// Raw trace files under any options: whatever the bytes are, each slot prints at most one line.
//
// The first 64 bytes of an input are the options, the rest is the file.

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz.h"
#include "lines/indentation.h"
#include "lines/output_line.h"
#include "probe/settings.h"
#include "rawfile/raw_reader.h"
#include "record/trace_record.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

constexpr size_t kOptionBytes = 64;

// What came out since the counts were set to 0.
struct Printed {
    size_t lines = 0;
    size_t bytes = 0;
    char last = '\n';
};
Printed printed;

ssize_t count(void*, const char* text, size_t size) {
    printed.lines += static_cast<size_t>(std::count(text, text + size, '\n'));
    printed.bytes += size;
    if (size > 0) printed.last = text[size - 1];
    return static_cast<ssize_t>(size);
}

std::FILE* codeFile() {
    constexpr char kLines[] =
        "0x01300004 fault\n0x01300008\tpage fault\n0x21040000 HAL\n0 nothing\n0x0130000C\n"
        "0x05243014 a name with seven blanks in it  and more than sixty-three characters on the "
        "line\n0xFFFFFFFC last";
    const int file = memfd_create("codes", MFD_CLOEXEC);
    require(write(file, kLines, sizeof kLines - 1) == ssize_t{sizeof kLines - 1}, "codes written");
    return fdopen(file, "r");
}

void apply(Input options) {
    static std::FILE* const codes = codeFile();
    settings = Settings{};
    const auto flags = options.number<uint32_t>();
    unsigned bit = 0;
    const auto next = [&] { return flags >> bit++ & 1; };
    settings.timeMode = next() | next() << 1;
    for (uint32_t* field : {&settings.verbose, &settings.showThread, &settings.showGroup,
                            &settings.showMethod, &settings.showPointer, &settings.indent,
                            &settings.showCodes, &settings.showCpu, &settings.basicFormat,
                            &settings.noSeparator, &settings.includeHAL, &settings.showHistoric}) {
        *field = next();
    }
    if (next() != 0) settings.printMask |= kPrintAll;
    if (next() != 0) {
        std::strcpy(settings.decodePath, "codes");
        settings.decodeFile = codes;
    }
    const bool out = next() != 0;
    const bool except = next() != 0;
    const auto outOf = options.number<uint64_t>();
    const auto exceptOf = options.number<uint64_t>();
    for (uint32_t id = 0; id < 64; ++id) {
        if (out && (outOf >> id & 1) != 0) settings.filterOut.insert(id);
        if (except && (exceptOf >> id & 1) != 0) settings.filterAllExcept.insert(id);
    }
    settings.tickDivisor = static_cast<double>(options.number<uint64_t>());

    resetIndentation();
    // Where the line's buffer comes to its end.
    if (const auto depth = options.number<uint16_t>(); depth > 0xFF00) {
        constexpr int kBufferEnd = 4096;
        char* const begin = outputLine.cursor();
        for (int i = kBufferEnd - 128 + (depth & 0xFF); i > 0; --i) {
            indentIn();
            outputLine.moveTo(begin);
        }
    }
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
    require(write(file, bytes.data(), bytes.size()) == length, "the file takes it");
    return file;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool redirected = [] {
        stdout = fopencookie(nullptr, "w",
                             {.read = nullptr, .write = count, .seek = nullptr, .close = nullptr});
        return stdout != nullptr;
    }();
    require(redirected, "standard output is counted");

    Input input(data, size);
    const auto options = input.bytes(kOptionBytes);
    const auto bytes = input.rest();
    apply({options.data(), options.size()});
    std::fflush(stdout);
    printed = {};

    const bool pipeWanted = options.size() == kOptionBytes && (options.back() & 1) != 0;
    const int file = fileOf(bytes, pipeWanted);
    char path[32];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", file);
    readRawFile(path);
    close(file);
    std::fflush(stdout);

    // Texts that print characters print any byte, a line end among them.
    if (std::ranges::find(bytes, uint8_t{'\n'}) == bytes.end()) {
        require(printed.lines <= bytes.size() / sizeof(TraceRecord), "a slot prints one line");
    }
    require(printed.last == '\n', "all lines are whole");
    return 0;
}
