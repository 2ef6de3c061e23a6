// sysctl and sysctlbyname over the facility's operations: names, lengths, errno.

#include <cerrno>
#include <cstring>
#include <span>
#include <string_view>

#include "calls.h"
#include "platform/standin/attachment.h"
#include "platform/standin/facility.h"
#include "platform/standin/notice.h"

namespace {

namespace standin = sonaprobe::standin;
using namespace sonaprobe::platform;

// What a call gives for the answer: room going in, its use coming out.
struct OldBuffer {
    void* bytes;
    size_t* length;

    bool holds(size_t wanted) const {
        return bytes != nullptr && length != nullptr && *length == wanted;
    }
};

int bufferInfo(OldBuffer old) {
    if (old.bytes == nullptr || old.length == nullptr) return EINVAL;
    if (*old.length < sizeof(KernelBufferInfo)) return ENOMEM;
    KernelBufferInfo info{};
    const int error = standin::getBufferInfo(info);
    if (error != 0) return error;
    std::memcpy(old.bytes, &info, sizeof info);
    *old.length = sizeof info;
    return 0;
}

int setInterest(OldBuffer old) {
    if (!old.holds(sizeof(TraceInterest))) return EINVAL;
    TraceInterest interest{};
    std::memcpy(&interest, old.bytes, sizeof interest);
    return standin::setInterest(interest);
}

int readRecords(OldBuffer old) {
    if (old.bytes == nullptr || old.length == nullptr) return EINVAL;
    uint64_t count = 0;
    const int error = standin::readRecords(static_cast<unsigned char*>(old.bytes),
                                           *old.length / standin::kSlotBytes, count);
    if (error == 0) *old.length = static_cast<size_t>(count);
    return error;
}

// The operations by their word of the name; those that take a value have one word more.
int traceOperation(std::span<const int> name, OldBuffer old) {
    constexpr std::size_t kPlain = 3;
    constexpr std::size_t kWithValue = 4;
    if (name.size() < kPlain || name[0] != kCtlKern || name[1] != kKernKdebug) return ENOENT;
    const bool valued = name[2] == kKernKdEnable || name[2] == kKernKdSetBuf;
    const bool wordsFit = name.size() == (valued ? kWithValue : kPlain);
    switch (name[2]) {
        case kKernKdEnable: return wordsFit ? standin::enableTracing(name[3] != 0) : EINVAL;
        case kKernKdSetBuf:
            return wordsFit ? standin::setBufferSize(static_cast<uint32_t>(name[3])) : EINVAL;
        case kKernKdGetBuf: return wordsFit ? bufferInfo(old) : EINVAL;
        case kKernKdSetup: return wordsFit ? standin::setUp() : EINVAL;
        case kKernKdRemove: return wordsFit ? standin::removeBuffer() : EINVAL;
        case kKernKdSetReg: return wordsFit ? setInterest(old) : EINVAL;
        case kKernKdReadTr: return wordsFit ? readRecords(old) : EINVAL;
        default: return ENOENT;
    }
}

int audioFlags(OldBuffer old, const void* newValue, size_t newLength) {
    AudioDebugFlagsRequest request{};
    if (newValue == nullptr || newLength != sizeof request) return EINVAL;
    std::memcpy(&request, newValue, sizeof request);
    if (request.magic != kAudioDebugMagic) return EINVAL;
    if (request.operation == kAudioFlagsSet && old.bytes == nullptr) {
        return standin::setAudioFlags(request.value);
    }
    if (request.operation != kAudioFlagsGet || !old.holds(sizeof request)) return EINVAL;
    const int error = standin::getAudioFlags(request.value);
    if (error == 0) std::memcpy(old.bytes, &request, sizeof request);
    return error;
}

int answer(int error) {
    if (error == 0) return 0;
    const standin::Refusal& refusal = standin::lastRefusal();
    if (error == EPERM && *refusal.path != '\0') {
        standin::tellRefusal(refusal.path, refusal.reason);
    }
    errno = error;
    return -1;
}

}  // namespace

int sysctl(int* name, unsigned nameLength, void* old, size_t* oldLength, void* newValue,
           size_t newLength) {
    if (name == nullptr || newValue != nullptr || newLength != 0) return answer(EINVAL);
    return answer(traceOperation({name, nameLength}, {old, oldLength}));
}

int sysctlbyname(const char* name, void* old, size_t* oldLength, void* newValue, size_t newLength) {
    if (name == nullptr) return answer(EINVAL);
    if (name != std::string_view("debug.Audio")) return answer(ENOENT);
    return answer(audioFlags({old, oldLength}, newValue, newLength));
}
