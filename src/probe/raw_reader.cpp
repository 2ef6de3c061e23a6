// --read: opening and reading are waiting windows, messages stand among the lines.

#include "probe/raw_reader.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "live/signals.h"
#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "rawfile/slot_reader.h"

namespace sonaprobe {

namespace {

// Opening a pipe waits for its writer.
int openFile(const char* path) {
    for (;;) {
        const WaitingWindow window;
        const int file = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
        if (file >= 0 || errno != EINTR) return file;
    }
}

// What has been printed goes out before the program waits for more to print.
ssize_t readOrFlush(int file, void* room, size_t length) {
    pollfd state{.fd = file, .events = POLLIN, .revents = 0};
    if (poll(&state, 1, 0) == 0) flushOutput();
    const WaitingWindow window;
    return ::read(file, room, length);
}

void tellOfMarker(const TraceRecord& slot) {
    if (slot.debugid == kInvalidMarker) {
        printMessage(stdout, "Found an invalid entry in raw file.\n");
    } else if (slot.debugid == kDivisorMarker) {
        printMessage(stdout, "Found divisor %f as 0x%" PRIx64 "\n",
                     static_cast<double>(slot.timestamp), slot.timestamp);
    }
}

}  // namespace

void readRawFile(const char* path) {
    const int file = openFile(path);
    if (file < 0) fatalExit("Could not open raw file to read!\n");
    LinePrinter& printer = linePrinter();
    SlotReader reader(file, readOrFlush);
    for (auto slots = reader.next(); !slots.empty(); slots = reader.next()) {
        for (const TraceRecord& slot : slots) {
            if (settings.line.verbose) tellOfMarker(slot);
            printer.takeSlot(slot);
            takeSignal();
        }
    }
    ::close(file);
}

}  // namespace sonaprobe
