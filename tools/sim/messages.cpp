// Words the failures.

#include "sim/messages.h"

#include <cerrno>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "platform/standin/attachment.h"
#include "platform/standin/facility.h"

namespace sonaprobe::sim {
namespace {

void explainRefusal(const char* action) {
    if (geteuid() != 0) {
        complain("cannot %s: the trace facility is root's; run this as root", action);
        return;
    }
    const standin::Refusal& refusal = standin::lastRefusal();
    complain("cannot %s: %s %s, so it is not trusted; when no program uses it, remove %s", action,
             refusal.path, refusal.reason, standin::kFolder);
}

void explainOwner(const char* action) {
    standin::FacilityStatus status;
    const bool known = standin::getStatus(status) == 0 && status.owner.value_or(0) != 0;
    if (known) {
        complain("cannot %s: process %d owns the trace facility until it ends", action,
                 *status.owner);
    } else {
        complain("cannot %s: another process owns the trace facility until it ends", action);
    }
}

}  // namespace

void complain(const char* format, ...) {
    std::fputs("sonaprobe-sim: ", stderr);
    va_list values;
    va_start(values, format);
    std::vfprintf(stderr, format, values);
    va_end(values);
    std::fputc('\n', stderr);
}

void printLogged(uint64_t logged, uint64_t posted) {
    std::printf("%" PRIu64 " of %" PRIu64 " records logged\n", logged, posted);
    if (logged > 0 || posted == 0 || isatty(STDERR_FILENO) == 0) return;
    std::fflush(stdout);
    complain("nobody traced meanwhile, or asked for other records; run sonaprobe at the same time");
}

int facilityFailure(const char* action, int error) {
    switch (error) {
        case EPERM: explainRefusal(action); break;
        case EBUSY: explainOwner(action); break;
        case ENOMEM:
            complain("cannot %s: no room in %s; make some in /dev/shm", action, standin::kFolder);
            break;
        case ENOENT:
            complain("cannot %s: there is no /dev/shm; mount a tmpfs there", action);
            break;
        default: complain("cannot %s: %s: %s", action, standin::kFolder, std::strerror(error));
    }
    return 1;
}

}  // namespace sonaprobe::sim
