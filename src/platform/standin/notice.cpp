// Words the notices.

#include "platform/standin/notice.h"

#include <atomic>
#include <cstdio>
#include <unistd.h>

#include "platform/standin/layout.h"

namespace sonaprobe::standin {
namespace {

bool isFirst(std::atomic_flag& told) { return !told.test_and_set(); }

}  // namespace

void tellRefusal(const char* path, const char* reason) {
    static std::atomic_flag told;
    if (!isFirst(told)) return;
    dprintf(STDERR_FILENO,
            "trace facility: %s %s, so it is not trusted; when no program uses it: rm -r %s\n",
            path, reason, kFolder);
}

void tellCutShort(const char* path) {
    static std::atomic_flag told;
    if (!isFirst(told)) return;
    dprintf(STDERR_FILENO, "trace facility: %s was cut short while in use; what it held is lost\n",
            path);
}

void tellHolder(pid_t holder) {
    static std::atomic_flag told;
    if (!isFirst(told)) return;
    if (holder <= 0) {
        dprintf(STDERR_FILENO,
                "trace facility: a process out of sight is in the midst of an operation\n");
        return;
    }
    dprintf(STDERR_FILENO,
            "trace facility: process %d is in the midst of an operation; if it is stopped: "
            "kill -CONT %d\n",
            holder, holder);
}

}  // namespace sonaprobe::standin
