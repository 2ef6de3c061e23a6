// The passes over a kernel that answers anything: a pass asks for no more than there is room for,
// restarts tracing after a wrap, prints and stores each valid record once, in order, and ends the
// program where an operation fails.
//
// Each pass takes from the input: its kind, what KERN_KDGETBUF answers, which operation fails, how
// many records KERN_KDREADTR says and how many it brings.

#include "probe/collection.h"

#include <cerrno>
#include <csetjmp>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "fuzz.h"
#include "platform/platform.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/tracing.h"
#include "rawfile/raw_writer.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

constexpr uint32_t kRoom = 48;  // records of the collection buffer

enum class Pass : uint8_t { print, write, dump };

// The kernel of one pass: what it is to answer, and what it was asked.
struct Kernel {
    platform::KernelBufferInfo info{};
    unsigned failing = 0;  // the number of the call that fails, from 1; 0: none
    int32_t count = 0;
    std::span<const uint8_t> brought{};

    std::vector<int> calls{};  // operations; switching tracing off is -KERN_KDENABLE
    std::span<TraceRecord> room{};
};
Kernel kernel;

std::jmp_buf whereItEnds;

}  // namespace

[[noreturn]] void endFatally(const char* message) asm("__wrap__ZN9sonaprobe9fatalExitEPKc");

void endFatally(const char* message) {
    require(message != nullptr, "only what fails ends a pass");
    std::longjmp(whereItEnds, 1);
}

extern "C" int __wrap_sysctl(int* name, unsigned nameLength, void* old, size_t* oldLength, void*,
                             size_t) {
    require(name[0] == platform::kCtlKern && name[1] == platform::kKernKdebug, "the facility");
    const int operation = name[2];
    const bool off = operation == platform::kKernKdEnable && nameLength == 4 && name[3] == 0;
    kernel.calls.push_back(off ? -operation : operation);
    if (operation == platform::kKernKdReadTr) {
        kernel.room = {static_cast<TraceRecord*>(old), *oldLength / sizeof(TraceRecord)};
    }
    if (kernel.calls.size() == kernel.failing) {
        errno = ENOMEM;
        return -1;
    }
    if (operation == platform::kKernKdGetBuf) std::memcpy(old, &kernel.info, sizeof kernel.info);
    if (operation == platform::kKernKdReadTr) {
        if (!kernel.brought.empty()) {
            std::memcpy(old, kernel.brought.data(), std::min(kernel.brought.size(), *oldLength));
        }
        *oldLength = static_cast<size_t>(kernel.count);
    }
    return 0;
}

namespace {

size_t linesPrinted = 0;
char lastPrinted = '\n';

ssize_t count(void*, const char* text, size_t size) {
    linesPrinted += static_cast<size_t>(std::count(text, text + size, '\n'));
    if (size > 0) lastPrinted = text[size - 1];
    return static_cast<ssize_t>(size);
}

void setUpOnce() {
    stdout = fopencookie(nullptr, "w",
                         {.read = nullptr, .write = count, .seek = nullptr, .close = nullptr});
    settings.line.printMask |= kPrintAll;
    settings.line.includeHAL = 1;
    traceSession().allocateBuffer(kRoom);
    const auto room = traceSession().buffer();
    std::ranges::fill(room, TraceRecord{});
}

void noteNoLoss(const TraceRecord&, int) { require(false, "the file takes all records"); }

// Whether the pass came to its end.
bool run(Pass pass, RawWriter& rawFile) {
    if (setjmp(whereItEnds) != 0) return false;
    switch (pass) {
        case Pass::print: collectAndPrint(); break;
        case Pass::write: writeRawRecords(rawFile); break;
        case Pass::dump: dumpOnceWithAlloc(); break;
    }
    return true;
}

// What a pass asks the kernel for, one after the other.
std::vector<int> callsOf(Pass pass) {
    using namespace platform;
    std::vector<int> calls{kKernKdGetBuf};
    if (pass == Pass::dump) {
        const bool logging = kernel.info.nolog != 1;
        if (logging) calls.push_back(-kKernKdEnable);
        if (kernel.info.entries < 0) return calls;
        calls.push_back(kKernKdReadTr);
        if (logging) calls.push_back(kKernKdEnable);
        return calls;
    }
    calls.push_back(kKernKdReadTr);
    if ((kernel.info.flags & kBufferWrapped) != 0) {
        calls.insert(calls.end(), {-kKernKdEnable, kKernKdEnable});
    }
    return calls;
}

size_t roomOf(Pass pass) {
    const int32_t entries = kernel.info.entries;
    if (pass == Pass::dump) return static_cast<size_t>(entries);
    return entries < 0 ? kRoom : std::min(static_cast<uint32_t>(entries), kRoom);
}

void requireStored(int file, std::span<const TraceRecord> records) {
    TraceRecord slot{};
    off_t at = 0;
    for (TraceRecord record : records) {
        if (record.debugid == kInvalidMarker) continue;
        record.reserved = 0;
        require(pread(file, &slot, sizeof slot, at) == ssize_t{sizeof slot} &&
                    std::memcmp(&slot, &record, sizeof slot) == 0,
                "each valid record is stored");
        at += off_t{sizeof slot};
    }
    require(lseek(file, 0, SEEK_END) == at, "and nothing else");
}

void play(Input& input) {
    const auto kind = input.number<uint8_t>();
    const auto pass = static_cast<Pass>(kind % 4 % 3);
    settings.line.verbose = kind >> 7;
    kernel = {};
    kernel.failing = kind >> 2 & 7;
    kernel.info = {.entries = input.number<int16_t>(),
                   .nolog = kind >> 5 & 1,
                   .flags = input.number<uint8_t>(),
                   .threads = 0,
                   .bufid = 0};
    kernel.count = input.number<int16_t>();
    kernel.brought = input.bytes(input.number<uint8_t>() % (2 * kRoom) * sizeof(TraceRecord));

    static const int file = memfd_create("trace", MFD_CLOEXEC);
    require(ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0, "the file is empty");
    RawWriter rawFile(fcntl(file, F_DUPFD_CLOEXEC, 0), {.lost = noteNoLoss});
    linesPrinted = 0;
    const bool ended = !run(pass, rawFile);
    flushOutput();

    std::vector<int> expected = callsOf(pass);
    const bool failed = kernel.failing != 0 && kernel.failing <= expected.size();
    if (failed) expected.resize(kernel.failing);
    require(kernel.calls == expected, "the kernel is asked for what the pass needs");
    const size_t read =
        std::min(kernel.room.size(), static_cast<size_t>(std::max(kernel.count, 0)));
    const bool unable = pass == Pass::dump && (kernel.info.entries < 0 || read == 0);
    require(ended == (failed || unable), "a pass ends the program where it fails, and only there");
    if (!ended) {
        require(kernel.room.size() == roomOf(pass), "the kernel is told of the room that there is");
        const auto records = kernel.room.first(read);
        if (pass == Pass::write) requireStored(file, records);
        // Verbose passes say more, and texts that print characters print a line end among them.
        const bool countable = settings.line.verbose == 0 &&
                               std::ranges::find(std::as_bytes(records), std::byte{'\n'}) ==
                                   std::as_bytes(records).end();
        require(!countable || linesPrinted <= read, "a record prints one line");
        require(lastPrinted == '\n', "all lines are whole");
    }
    if (pass == Pass::dump) std::free(kernel.room.data());
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = (setUpOnce(), true);
    Input input(data, size);
    linePrinter().resetIndentation();
    while (ready && !input.atEnd()) play(input);
    return 0;
}
