// Standard output has one owner, this file: lines, messages and failures are in order. The C
// library is not asked, which loses what it holds when a write fails.

#include "probe/output.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "live/signals.h"
#include "live/streams.h"
#include "probe/code_name_file.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

// A write that failed, with its errno. When the program is ending, or nobody reads any more, the
// descriptor is turned to /dev/null, so that nothing waits again.
void takeFailure(int descriptor) {
    if (descriptor == STDOUT_FILENO && errno == EPIPE) noteBrokenPipe();
    if (isEnding() && (errno == EINTR || errno == EPIPE)) turnToNowhere(descriptor);
}

// Waits until standard output takes bytes again, when somebody has set it not to wait by itself.
// False once the program has no more time for that.
bool waitForRoom() {
    pollfd state{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
    poll(&state, 1, -1);
    if (!isOutOfTime()) return true;
    errno = EINTR;
    return false;
}

// What follows a failure begins on a line of its own, whatever it has cut.
void writeToStandardOutput(void*, const char* text, size_t length) {
    while (length > 0) {
        const ssize_t now = ::write(STDOUT_FILENO, text, length);
        if (now >= 0) {
            text += now;
            length -= static_cast<size_t>(now);
        } else if ((errno != EAGAIN && errno != EWOULDBLOCK) || !waitForRoom()) {
            outputLine().beginAnew();
            takeFailure(STDOUT_FILENO);
            return;
        }
    }
}

// A pipe that holds many of our pieces: its reader and we wait for each other less often.
void widenOutputPipe() {
#ifdef F_SETPIPE_SZ  // Linux alone has it
    constexpr int kSize = 1 << 20;
    const int size = fcntl(STDOUT_FILENO, F_GETPIPE_SZ);
    if (size >= 0 && size < kSize) fcntl(STDOUT_FILENO, F_SETPIPE_SZ, kSize);
#endif
}

bool isWatched() { return isatty(STDOUT_FILENO) != 0; }

bool isOpen = false;

}  // namespace

OutputLine& outputLine() {
    static OutputLine line({.write = writeToStandardOutput});
    static const bool prepared = [] {
        if (!isWatched()) line.gather();
        std::atexit([] { line.handOver(); });
        return true;
    }();
    static_cast<void>(prepared);
    return line;
}

LinePrinter& linePrinter() {
    static LinePrinter printer(settings.line, outputLine(), codeNameLookup());
    return printer;
}

void printMessage(std::FILE* stream, const char* format, ...) {
    va_list values;
    va_start(values, format);
    if (stream == stderr) {
        if (std::vfprintf(stderr, format, values) < 0) takeFailure(STDERR_FILENO);
        std::clearerr(stderr);
    } else {
        OutputLine& line = outputLine();
        const int length = std::vsnprintf(line.cursor(), kMessageRoom, format, values);
        line.moveTo(line.cursor() + std::clamp(length, 0, static_cast<int>(kMessageRoom) - 1));
        line.endText();
        if (isOpen) line.handOver();
    }
    va_end(values);
}

// Under --write, which never flushes, a reader would be kept waiting by large pieces.
void openOutput() {
    constexpr size_t kSmallPiece = 4096;
    flushOutput();
    isOpen = true;
    if (isWatched()) return;
    if (settings.writeRaw) {
        outputLine().gather(kSmallPiece);
    } else {
        widenOutputPipe();
    }
}

void flushOutput() { outputLine().handOver(); }

}  // namespace sonaprobe
