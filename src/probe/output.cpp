// Messages, and the failures of standard output and standard error.

#include "probe/output.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "probe/code_name_file.h"
#include "probe/settings.h"
#include "probe/signals.h"

namespace sonaprobe {

namespace {

void turnToNowhere(int descriptor) {
    const int nowhere = openNowhere();
    if (nowhere < 0) return;
    dup2(nowhere, descriptor);
    close(nowhere);
}

void writeToStandardOutput(void*, const char* text, size_t length) {
    if (std::fwrite(text, 1, length, stdout) < length) outputFailed(stdout);
}

}  // namespace

OutputLine& outputLine() {
    static OutputLine line({.write = writeToStandardOutput});
    return line;
}

LinePrinter& linePrinter() {
    static LinePrinter printer(settings.line, outputLine(), codeNameLookup());
    return printer;
}

void printMessage(std::FILE* stream, const char* format, ...) {
    if (stream == stdout) outputLine().handOver();
    va_list values;
    va_start(values, format);
    if (std::vfprintf(stream, format, values) < 0) outputFailed(stream);
    va_end(values);
}

void outputFailed(std::FILE* stream) {
    if (stream == stdout && errno == EPIPE) noteBrokenPipe();
    const bool givenUp = isEnding() && (errno == EINTR || errno == EPIPE);
    if (givenUp) {
        turnToNowhere(fileno(stream));
    } else if (stream == stdout) {
        outputLine().beginAnew();
    }
    std::clearerr(stream);
}

void giveUpStream(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) == 0 && !S_ISREG(status.st_mode)) turnToNowhere(descriptor);
}

int openNowhere() {
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    return nowhere >= 0 ? nowhere : open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

void flushOutput() {
    outputLine().handOver();
    if (std::fflush(nullptr) != 0) outputFailed(stdout);
}

}  // namespace sonaprobe
