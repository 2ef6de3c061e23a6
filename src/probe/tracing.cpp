// The trace facility's operations, their messages, and the buffer that takes the records.

#include "probe/tracing.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/signals.h"

namespace sonaprobe {

namespace {

using platform::KernelBufferInfo;
using platform::TraceInterest;

std::span<TraceRecord> buffer;

// Whether an operation succeeded. A signal that broke it off ends the program.
bool isDone(bool success) {
    if (!success && errno == EINTR) takeSignal();
    return success;
}

}  // namespace

std::span<TraceRecord> allocateRecords(size_t count) {
    size_t bytes;
    if (__builtin_mul_overflow(count, sizeof(TraceRecord), &bytes)) return {};
    void* const memory = std::malloc(std::max(bytes, sizeof(TraceRecord)));
    if (memory == nullptr) return {};
    return {static_cast<TraceRecord*>(memory), count};
}

void allocateCollectionBuffer() {
    buffer = allocateRecords(settings.bufferSize);
    if (buffer.data() == nullptr) fatalExit("Can't allocate memory for tracing info\n");
}

std::span<TraceRecord> collectionBuffer() { return buffer; }

void removeTraceBuffer() {
    errno = 0;
    if (isDone(trace::removeBuffer())) return;
    settings.removeOnExit = 0;
    fatalExit(errno == EBUSY ? "The trace facility is currently in use.\n"
                             : "Trace facility failure, KERN_KDREMOVE\n");
}

void setTraceBufferSize(uint32_t records) {
    if (!isDone(trace::setBufferSize(records))) {
        fatalExit("trace facility failure, KERN_KDSETBUF\n");
    }
}

void setTraceInterest(uint32_t type) {
    if (type != platform::kInterestValues && type != platform::kInterestSubclass) {
        type = platform::kInterestRange;
    }
    const TraceInterest interest{type, settings.interestValue1, settings.interestValue2, 0, 0};
    if (!isDone(trace::setInterest(interest))) {
        fatalExit("trace facility failure, KERN_KDSETREG\n");
    }
}

void setupTraceBuffer() {
    if (!isDone(trace::setUpBuffer())) fatalExit("trace facility failure, KERN_KDSETUP\n");
}

void enableTracing(int on) {
    if (!isDone(trace::enable(on != 0))) fatalExit("trace facility failure, KERN_KDENABLE\n");
    settings.traceEnabled = on != 0;
}

KernelBufferInfo bufferInfo() {
    KernelBufferInfo info{};
    if (!isDone(trace::getBufferInfo(info))) fatalExit("trace facility failure, KERN_KDGETBUF\n");
    return info;
}

trace::Read readTrace(std::span<TraceRecord> room) {
    const trace::Read read = trace::read(room);
    isDone(read.result >= 0);
    return read;
}

void printBufferInfo() {
    const KernelBufferInfo info = bufferInfo();
    printMessage(stdout,
                 "The kernel buffer settings are:\n"
                 "\tentries:\t%d\n"
                 "\tflags:\t\t0x%x\n"
                 "\tnolog:\t\t%d\n"
                 "\tbufid:\t\t%d\n"
                 "\tthreads:\t%d\n",
                 info.entries, info.flags, info.nolog, info.bufid, info.threads);
}

}  // namespace sonaprobe
