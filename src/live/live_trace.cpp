// The steps of a live run, each with its message.

#include "live/live_trace.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "live/signals.h"
#include "platform/platform.h"

namespace sonaprobe {

namespace {

using platform::AudioDebugFlagsRequest;
using platform::KernelBufferInfo;

constexpr const char* kFlagsName = "debug.Audio";

constexpr const char* kEnableFailed = "trace facility failure, KERN_KDENABLE\n";

// Whether an operation succeeded. A signal that broke it off while it waited ends the program.
bool isDone(bool success) {
    if (!success && errno == EINTR) takeSignal();
    return success;
}

bool getAudioFlags(AudioDebugFlagsRequest& reply) {
    AudioDebugFlagsRequest request{platform::kAudioDebugMagic, platform::kAudioFlagsGet, 0};
    size_t length = sizeof reply;
    return isDone(sysctlbyname(kFlagsName, &reply, &length, &request, sizeof request) == 0);
}

bool setAudioFlags(uint32_t flags) {
    AudioDebugFlagsRequest request{platform::kAudioDebugMagic, platform::kAudioFlagsSet, flags};
    return isDone(sysctlbyname(kFlagsName, nullptr, nullptr, &request, sizeof request) == 0);
}

constexpr const char* kFlagsNotSet = "sysctlbyname failed to set new 'audio' debug flags\n";

const char* removalFailure() {
    return errno == EBUSY ? "The trace facility is currently in use.\n"
                          : "Trace facility failure, KERN_KDREMOVE\n";
}

}  // namespace

std::span<TraceRecord> allocateRecords(size_t count) {
    size_t bytes;
    if (__builtin_mul_overflow(count, sizeof(TraceRecord), &bytes)) return {};
    void* const memory = std::malloc(std::max(bytes, sizeof(TraceRecord)));
    if (memory == nullptr) return {};
    return {static_cast<TraceRecord*>(memory), count};
}

double clockTicksPerMicrosecond() {
    mach_timebase_info_data_t timebase{};
    mach_timebase_info(&timebase);
    return static_cast<double>(timebase.denom) / static_cast<double>(timebase.numer) * 1000.0;
}

void LiveTrace::freeBuffer() {
    std::free(buffer_.data());
    buffer_ = {};
}

void LiveTrace::endUnless(bool done, const char* message) {
    if (!done) program_.fail(message);
}

void LiveTrace::startDrivers() {
    AudioDebugFlagsRequest reply{};
    bool known = getAudioFlags(reply);
    if (!known) known = getAudioFlags(reply);
    if (!known) {
        program_.warn("sysctlbyname failed to get old 'audio' debug flags second time\n");
        reply.value = 0;
    }
    savedAudioFlags_ = reply.value;
    if (!setAudioFlags(savedAudioFlags_ | platform::kAudioTracingOn)) program_.warn(kFlagsNotSet);
}

void LiveTrace::allocateBuffer(uint32_t records) {
    buffer_ = allocateRecords(records);
    endUnless(buffer_.data() != nullptr, "Can't allocate memory for tracing info\n");
}

void LiveTrace::removeBuffer() {
    errno = 0;
    if (isDone(trace::removeBuffer())) return;
    removeFailed_ = true;
    program_.fail(removalFailure());
}

void LiveTrace::setUpBuffer(const Wanted& wanted) {
    uint32_t type = wanted.interestType;
    if (type != platform::kInterestValues && type != platform::kInterestSubclass) {
        type = platform::kInterestRange;
    }
    removeBuffer();
    takeSignal();
    endUnless(isDone(trace::setBufferSize(wanted.records)),
              "trace facility failure, KERN_KDSETBUF\n");
    takeSignal();
    endUnless(
        isDone(trace::setInterest({type, wanted.interestValue1, wanted.interestValue2, 0, 0})),
        "trace facility failure, KERN_KDSETREG\n");
    takeSignal();
    endUnless(isDone(trace::setUpBuffer()), "trace facility failure, KERN_KDSETUP\n");
    takeSignal();
}

void LiveTrace::enableTracing(bool on) {
    endUnless(isDone(trace::enable(on)), kEnableFailed);
    enabled_ = on;
}

KernelBufferInfo LiveTrace::bufferInfo() {
    KernelBufferInfo info{};
    endUnless(isDone(trace::getBufferInfo(info)), "trace facility failure, KERN_KDGETBUF\n");
    return info;
}

trace::Read LiveTrace::read(std::span<TraceRecord> room) {
    const trace::Read read = trace::read(room);
    isDone(read.result >= 0);
    return read;
}

// The part of the buffer that a kernel buffer of this many entries can fill. A number of entries
// that makes no sense gives the whole.
std::span<TraceRecord> LiveTrace::roomFor(int32_t entries) const {
    if (entries < 0) return buffer_;
    return buffer_.first(std::min(static_cast<size_t>(entries), buffer_.size()));
}

LiveTrace::Pass LiveTrace::takePass() {
    const KernelBufferInfo info = bufferInfo();
    const std::span<TraceRecord> room = roomFor(info.entries);
    const trace::Read got = read(room);
    if (got.result < 0) return {got.result, false, room.size(), {}};
    const bool wrapped = (info.flags & platform::kBufferWrapped) != 0;
    if (wrapped) {
        enableTracing(false);
        enableTracing(true);
    }
    return {got.result, wrapped, room.size(), room.first(got.records)};
}

const char* LiveTrace::cleanUp() {
    const char* failure = nullptr;
    if (enabled_ && !disableTried_) {
        disableTried_ = true;
        if (!trace::enable(false)) failure = kEnableFailed;
    }
    if (!removeFailed_) {
        errno = 0;
        if (!trace::removeBuffer()) {
            removeFailed_ = true;
            failure = removalFailure();
        }
    }
    if (!setAudioFlags(savedAudioFlags_)) program_.warn(kFlagsNotSet);
    return failure;
}

}  // namespace sonaprobe
