// The operations of the kernel's trace facility, through sysctl.

#include "trace/trace_facility.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "platform/platform.h"
#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

using platform::KernelBufferInfo;
using platform::TraceInterest;

std::span<TraceRecord> buffer;

// An operation without value. `old` and its length are as the operation has them.
int control(int operation, void* old = nullptr, size_t* oldLength = nullptr) {
    int name[] = {platform::kCtlKern, platform::kKernKdebug, operation};
    return sysctl(name, 3, old, oldLength, nullptr, 0);
}

// An operation with a value as the fourth word of its name.
int control(int operation, int value) {
    int name[] = {platform::kCtlKern, platform::kKernKdebug, operation, value};
    return sysctl(name, 4, nullptr, nullptr, nullptr, 0);
}

}  // namespace

void allocateCollectionBuffer() {
    const size_t records = settings.bufferSize;
    void* const memory = std::malloc(records * sizeof(TraceRecord));
    if (memory == nullptr) fatalExit("Can't allocate memory for tracing info\n");
    buffer = {static_cast<TraceRecord*>(memory), records};
}

std::span<TraceRecord> collectionBuffer() { return buffer; }

void removeTraceBuffer() {
    errno = 0;
    if (control(platform::kKernKdRemove) >= 0) return;
    settings.removeOnExit = 0;
    fatalExit(errno == EBUSY ? "The trace facility is currently in use.\n"
                             : "Trace facility failure, KERN_KDREMOVE\n");
}

void setTraceBufferSize(uint32_t records) {
    if (control(platform::kKernKdSetBuf, static_cast<int>(records)) < 0) {
        fatalExit("trace facility failure, KERN_KDSETBUF\n");
    }
}

void setTraceInterest(uint32_t type) {
    if (type != platform::kInterestValues && type != platform::kInterestSubclass) {
        type = platform::kInterestRange;
    }
    TraceInterest interest{type, settings.interestValue1, settings.interestValue2, 0, 0};
    size_t length = sizeof interest;
    if (control(platform::kKernKdSetReg, &interest, &length) < 0) {
        fatalExit("trace facility failure, KERN_KDSETREG\n");
    }
}

void setupTraceBuffer() {
    if (control(platform::kKernKdSetup) < 0) fatalExit("trace facility failure, KERN_KDSETUP\n");
}

void enableTracing(int on) {
    if (control(platform::kKernKdEnable, on) < 0) {
        fatalExit("trace facility failure, KERN_KDENABLE\n");
    }
    settings.traceEnabled = on != 0;
}

void getBufferInfo(KernelBufferInfo* info) {
    size_t length = sizeof *info;
    if (control(platform::kKernKdGetBuf, info, &length) < 0) {
        fatalExit("trace facility failure, KERN_KDGETBUF\n");
    }
}

TraceRead readTrace(std::span<TraceRecord> room) {
    size_t length = room.size_bytes();
    const int result = control(platform::kKernKdReadTr, room.data(), &length);
    const auto count = static_cast<int32_t>(length);  // the kernel counts in 32 bits
    if (result < 0 || count < 1) return {result, 0};
    return {result, std::min(static_cast<size_t>(count), room.size())};
}

void printBufferInfo() {
    KernelBufferInfo info{};
    getBufferInfo(&info);
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
