// The passes over the kernel's trace buffer.

#include "probe/collection.h"

#include <algorithm>
#include <span>
#include <unistd.h>

#include "live/signals.h"
#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/tracing.h"
#include "rawfile/raw_writer.h"

namespace sonaprobe {

namespace {

constexpr useconds_t kPassPeriod = 20'000;  // microseconds

void print(const TraceRecord& record) {
    linePrinter().print(record);
    takeSignal();
}

bool isInvalid(const TraceRecord& record) { return record.debugid == kInvalidMarker; }

// Stores a block of records, so that what is said of one that was lost stands before its line, and
// prints all of them, for what is stored is also printed. The first has this index in its pass.
void storeAndPrint(RawWriter& rawFile, std::span<const TraceRecord> block, size_t firstIndex) {
    for (const TraceRecord& record : block) {
        if (!isInvalid(record)) rawFile.store(record);
    }
    rawFile.writeHeld();
    size_t index = firstIndex;
    for (const TraceRecord& record : block) {
        if (!isInvalid(record)) {
            linePrinter().print(record);
        } else if (settings.line.verbose) {
            printMessage(stdout, "Tracepoint %zu is invalid.\n", index);
        }
        ++index;
    }
}

}  // namespace

void dumpOnceWithAlloc() {
    TraceSession& session = traceSession();
    const platform::KernelBufferInfo info = session.bufferInfo();
    const bool wasLogging = info.nolog != 1;
    if (wasLogging) session.enableTracing(false);

    // A negative count is as unallocatable as it looks in 64 bits.
    static std::span<TraceRecord> room;  // kept to the end, as the collection buffer is
    room = allocateRecords(static_cast<size_t>(info.entries));
    if (room.data() == nullptr) fatalExit("can't allocate memory for tracing info\n");

    const trace::Read read = session.read(room);
    if (read.result < 0) {
        if (settings.line.verbose) printMessage(stdout, "CollectWithAlloc error %d\n", read.result);
        fatalExit("trace facility failure, KERN_KDREADTR\n");
    }
    if (wasLogging) session.enableTracing(true);
    if (read.records == 0) fatalExit("trace facility failure, KERN_KDREADTR (no data) \n");
    for (const TraceRecord& record : room.first(read.records)) print(record);
    flushOutput();
}

void collectAndPrint() {
    const TraceSession::Pass pass = traceSession().takePass();
    if (pass.result < 0) {
        if (settings.line.verbose) printMessage(stdout, "CollectTrace error %d\n", pass.result);
        fatalExit(
            "trace facility failure, KERN_KDREADTR\n"
            "Try using a larger buffer size with --bufsize.\n");
    }
    if (pass.wrapped) {
        if (settings.line.verbose) printMessage(stdout, "Buffer has wrapped.\n");
        linePrinter().resetIndentation();
    }
    for (const TraceRecord& record : pass.records) print(record);
    flushOutput();
}

void writeRawRecords(RawWriter& rawFile) {
    const TraceSession::Pass pass = traceSession().takePass();
    if (pass.result < 0) fatalExit("trace facility failure, KERN_KDREADTR\n");
    const std::span<const TraceRecord> records = pass.records;
    for (size_t next = 0; next < records.size(); next += RawWriter::kBlockSlots) {
        const size_t count = std::min(records.size() - next, RawWriter::kBlockSlots);
        storeAndPrint(rawFile, records.subspan(next, count), next);
        takeSignal();
    }
}

void sleepBetweenPasses() {
    const WaitingWindow window;
    usleep(kPassPeriod);
}

}  // namespace sonaprobe
