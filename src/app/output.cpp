// Standard output's failures.

#include "app/output.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "app/signals.h"

namespace sonaprobe {

void outputFailed() {
    if (errno == EPIPE) noteBrokenPipe();
    const bool givenUp = isEnding() && (errno == EINTR || errno == EPIPE);
    if (givenUp) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (nowhere >= 0) {
            dup2(nowhere, STDOUT_FILENO);
            close(nowhere);
        }
    }
    std::clearerr(stdout);
}

void flushOutput() {
    if (std::fflush(nullptr) != 0) outputFailed();
}

}  // namespace sonaprobe
