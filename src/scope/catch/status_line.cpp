// Draws the line.

#include "scope/catch/status_line.h"

#include <cstdio>
#include <poll.h>
#include <unistd.h>

#include "scope/failure.h"

namespace sonaprobe::scope {

StatusLine::StatusLine() : enabled_(isatty(STDERR_FILENO) != 0) {}

void StatusLine::draw(const std::string& text, Nanoseconds now) {
    next_ = now + kInterval;
    pollfd terminal{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (poll(&terminal, 1, 0) != 1 || (terminal.revents & POLLOUT) == 0) return;
    std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
    drawn_ = true;
}

void StatusLine::say(const std::string& message) {
    clear();
    warn(message);
}

void StatusLine::clear() {
    if (drawn_) std::fputs("\r\x1b[K", stderr);
    drawn_ = false;
}

}  // namespace sonaprobe::scope
