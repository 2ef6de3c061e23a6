// The operations of the kernel's trace facility, through sysctl.

#include "trace/trace_facility.h"

#include <algorithm>

#include "platform/platform.h"

namespace sonaprobe::trace {

namespace {

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

bool getBufferInfo(platform::KernelBufferInfo& info) {
    size_t length = sizeof info;
    return control(platform::kKernKdGetBuf, &info, &length) >= 0;
}

bool removeBuffer() { return control(platform::kKernKdRemove) >= 0; }

bool setBufferSize(uint32_t records) {
    return control(platform::kKernKdSetBuf, static_cast<int>(records)) >= 0;
}

bool setInterest(platform::TraceInterest interest) {
    size_t length = sizeof interest;
    return control(platform::kKernKdSetReg, &interest, &length) >= 0;
}

bool setUpBuffer() { return control(platform::kKernKdSetup) >= 0; }

bool enable(bool on) { return control(platform::kKernKdEnable, on ? 1 : 0) >= 0; }

Read read(std::span<TraceRecord> room) {
    size_t length = room.size_bytes();
    const int result = control(platform::kKernKdReadTr, room.data(), &length);
    const auto count = static_cast<int32_t>(length);  // the kernel counts in 32 bits
    if (result < 0 || count < 1) return {result, 0};
    return {result, std::min(static_cast<size_t>(count), room.size())};
}

}  // namespace sonaprobe::trace
