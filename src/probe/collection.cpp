// The passes over the kernel's trace buffer.

#include "probe/collection.h"

#include <algorithm>
#include <span>
#include <unistd.h>

#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/signals.h"
#include "probe/tracing.h"
#include "rawfile/raw_writer.h"

namespace sonaprobe {

namespace {

using platform::KernelBufferInfo;

constexpr useconds_t kPassPeriod = 20'000;  // microseconds

// The part of the collection buffer that a kernel buffer of this many entries can fill. A number
// of entries that makes no sense gives the whole.
std::span<TraceRecord> roomFor(int32_t entries) {
    const std::span<TraceRecord> room = collectionBuffer();
    if (entries < 0) return room;
    return room.first(std::min(static_cast<size_t>(entries), room.size()));
}

void restartTracing() {
    enableTracing(0);
    enableTracing(1);
}

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
    const KernelBufferInfo info = bufferInfo();
    const bool wasLogging = info.nolog != 1;
    if (wasLogging) enableTracing(0);

    // A negative count is as unallocatable as it looks in 64 bits.
    static std::span<TraceRecord> room;  // kept to the end, as the collection buffer is
    room = allocateRecords(static_cast<size_t>(info.entries));
    if (room.data() == nullptr) fatalExit("can't allocate memory for tracing info\n");

    const trace::Read read = readTrace(room);
    if (read.result < 0) {
        if (settings.line.verbose) printMessage(stdout, "CollectWithAlloc error %d\n", read.result);
        fatalExit("trace facility failure, KERN_KDREADTR\n");
    }
    if (wasLogging) enableTracing(1);
    if (read.records == 0) fatalExit("trace facility failure, KERN_KDREADTR (no data) \n");
    for (const TraceRecord& record : room.first(read.records)) print(record);
    flushOutput();
}

void collectAndPrint() {
    const KernelBufferInfo info = bufferInfo();
    const std::span<TraceRecord> room = roomFor(info.entries);
    const trace::Read read = readTrace(room);
    if (read.result < 0) {
        if (settings.line.verbose) printMessage(stdout, "CollectTrace error %d\n", read.result);
        fatalExit(
            "trace facility failure, KERN_KDREADTR\n"
            "Try using a larger buffer size with --bufsize.\n");
    }
    if (info.flags & platform::kBufferWrapped) {
        restartTracing();
        if (settings.line.verbose) printMessage(stdout, "Buffer has wrapped.\n");
        linePrinter().resetIndentation();
    }
    for (const TraceRecord& record : room.first(read.records)) print(record);
    flushOutput();
}

void writeRawRecords(RawWriter& rawFile) {
    const KernelBufferInfo info = bufferInfo();
    const std::span<TraceRecord> room = roomFor(info.entries);
    const trace::Read read = readTrace(room);
    if (read.result < 0) fatalExit("trace facility failure, KERN_KDREADTR\n");
    if (info.flags & platform::kBufferWrapped) restartTracing();

    const std::span<const TraceRecord> records = room.first(read.records);
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
