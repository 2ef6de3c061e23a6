// Reading a raw trace file, in blocks of slots.

#include "rawfile/raw_reader.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

#include "lines/dispatch.h"
#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/signals.h"
#include "record/trace_record.h"

namespace sonaprobe {

namespace {

constexpr size_t kBlockSlots = 2048;  // 128 KiB

// Opening a pipe waits for its writer.
int openFile(const char* path) {
    for (;;) {
        const WaitingWindow window;
        const int file = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
        if (file >= 0 || errno != EINTR) return file;
    }
}

// What has been printed goes out before the program waits for more to print.
void flushBeforeWaiting(int file) {
    pollfd state{.fd = file, .events = POLLIN, .revents = 0};
    if (poll(&state, 1, 0) == 0) flushOutput();
}

size_t readBytes(int file, std::span<std::byte> room) {
    for (;;) {
        const WaitingWindow window;
        const ssize_t got = ::read(file, room.data(), room.size());
        if (got >= 0) return static_cast<size_t>(got);
        if (errno != EINTR) return 0;
    }
}

void takeDivisor(uint64_t stored) {
    settings.tickDivisor = static_cast<double>(stored);
    if (settings.verbose) {
        printMessage(stdout, "Found divisor %f as 0x%" PRIx64 "\n", settings.tickDivisor, stored);
    }
}

void takeSlot(const TraceRecord& slot) {
    switch (slot.debugid) {
        case kInvalidMarker:
            if (settings.verbose) printMessage(stdout, "Found an invalid entry in raw file.\n");
            break;
        case kDivisorMarker: takeDivisor(slot.timestamp); break;
        default: dispatchRecord(&slot); break;
    }
    takeSignal();
}

}  // namespace

void readRawFile(const char* path) {
    static std::array<TraceRecord, kBlockSlots> block;
    const std::span<std::byte> room = std::as_writable_bytes(std::span(block));

    const int file = openFile(path);
    if (file < 0) fatalExit("Could not open raw file to read!\n");
    struct stat status {};
    const bool mayWait = fstat(file, &status) != 0 || !S_ISREG(status.st_mode);

    for (size_t filled = 0;;) {
        if (mayWait) flushBeforeWaiting(file);
        const size_t got = readBytes(file, room.subspan(filled));
        if (got == 0) break;
        filled += got;
        const size_t slots = filled / sizeof(TraceRecord);
        for (const TraceRecord& slot : std::span(block).first(slots)) takeSlot(slot);
        const size_t used = slots * sizeof(TraceRecord);
        filled -= used;
        std::memmove(room.data(), room.data() + used, filled);
    }
    ::close(file);
}

}  // namespace sonaprobe
