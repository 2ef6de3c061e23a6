// Messages, and the failures of standard output and standard error.

#include "app/output.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <unistd.h>

#include "app/signals.h"
#include "format/output_line.h"

namespace sonaprobe {

void printMessage(std::FILE* stream, const char* format, ...) {
    if (stream == stdout) outputLine.handOver();
    va_list values;
    va_start(values, format);
    if (std::vfprintf(stream, format, values) < 0) outputFailed(stream);
    va_end(values);
}

void outputFailed(std::FILE* stream) {
    if (stream == stdout && errno == EPIPE) noteBrokenPipe();
    const bool givenUp = isEnding() && (errno == EINTR || errno == EPIPE);
    if (givenUp) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (nowhere >= 0) {
            dup2(nowhere, fileno(stream));
            close(nowhere);
        }
    }
    std::clearerr(stream);
}

void flushOutput() {
    outputLine.handOver();
    if (std::fflush(nullptr) != 0) outputFailed(stdout);
}

}  // namespace sonaprobe
