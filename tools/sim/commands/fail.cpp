// sonaprobe-sim fail: makes the next calls of an operation fail.

#include <cerrno>
#include <limits>
#include <string_view>

#include "platform/standin/facility.h"
#include "sim/arguments.h"
#include "sim/messages.h"

namespace sonaprobe::sim {
namespace {

using standin::FailurePoint;

struct NamedPoint {
    std::string_view name;
    FailurePoint point;
};
constexpr NamedPoint kPoints[] = {
    {"KERN_KDENABLE", FailurePoint::enable},     {"KERN_KDSETBUF", FailurePoint::setBuf},
    {"KERN_KDGETBUF", FailurePoint::getBuf},     {"KERN_KDSETUP", FailurePoint::setup},
    {"KERN_KDREMOVE", FailurePoint::remove},     {"KERN_KDSETREG", FailurePoint::setReg},
    {"KERN_KDREADTR", FailurePoint::readTr},     {"debug.Audio", FailurePoint::audio},
    {"debug.Audio.get", FailurePoint::audioGet}, {"debug.Audio.set", FailurePoint::audioSet},
};

struct NamedError {
    std::string_view name;
    uint32_t number;
};
constexpr NamedError kErrors[] = {
    {"EPERM", EPERM},   {"ENOENT", ENOENT},   {"EINTR", EINTR},   {"EIO", EIO},
    {"EAGAIN", EAGAIN}, {"ENOMEM", ENOMEM},   {"EACCES", EACCES}, {"EFAULT", EFAULT},
    {"EBUSY", EBUSY},   {"ENODEV", ENODEV},   {"EINVAL", EINVAL}, {"ENOSPC", ENOSPC},
    {"ENOSYS", ENOSYS}, {"ENOTSUP", ENOTSUP},
};
constexpr uint64_t kLargestErrno = 4095;

bool readPoint(std::string_view name, FailurePoint& point) {
    for (const NamedPoint& known : kPoints) {
        if (known.name != name) continue;
        point = known.point;
        return true;
    }
    return false;
}

bool readError(std::string_view name, uint32_t& error) {
    for (const NamedError& known : kErrors) {
        if (known.name != name) continue;
        error = known.number;
        return true;
    }
    uint64_t number = 0;
    if (!parseNumber(name, number) || number == 0 || number > kLargestErrno) return false;
    error = static_cast<uint32_t>(number);
    return true;
}

}  // namespace

int runFail(Arguments arguments) {
    constexpr uint64_t kMost = std::numeric_limits<uint32_t>::max();
    const char* operation = nullptr;
    const char* errorName = nullptr;
    uint64_t times = 1;
    uint64_t after = 0;
    const Operand operands[] = {{"OPERATION", &operation}, {"ERRNO", &errorName}};
    const NumberOption options[] = {{"times", &times, 0, kMost}, {"after", &after, 0, kMost}};
    if (!readArguments(arguments, operands, options)) return 1;

    FailurePoint point;
    if (!readPoint(operation, point)) {
        complain("unknown operation '%s'; sonaprobe-sim --help lists them", operation);
        return 1;
    }
    standin::ArmedFailure failure{
        .error = 0, .after = static_cast<uint32_t>(after), .times = static_cast<uint32_t>(times)};
    if (!readError(errorName, failure.error)) {
        complain("unknown error '%s'; give a name such as EBUSY or a number from 1 to 4095",
                 errorName);
        return 1;
    }
    const int error = standin::armFailure(point, failure);
    return error == 0 ? 0 : facilityFailure("arm the failure", error);
}

}  // namespace sonaprobe::sim
