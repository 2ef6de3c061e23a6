// Signal handling: noting, the waiting windows, and the timer that breaks off waiting writes.

#include "app/signals.h"

#include <cerrno>
#include <sys/time.h>

#include "app/fatal_exit.h"
#include "app/output.h"
#include "app/settings.h"

namespace sonaprobe {

namespace signals {

volatile std::sig_atomic_t noted = 0;
volatile std::sig_atomic_t windowOpen = 0;

namespace {

volatile std::sig_atomic_t ending = 0;
volatile std::sig_atomic_t timerStarted = 0;
bool brokenPipeEnds = false;

// signal() restarts a write that waits; the timer's signal does not.
void startBreakOffTimer() {
    if (timerStarted != 0) return;
    timerStarted = 1;
    constexpr timeval kPeriod{.tv_sec = 0, .tv_usec = 300'000};
    constexpr itimerval kTimer{.it_interval = kPeriod, .it_value = kPeriod};
    setitimer(ITIMER_REAL, &kTimer, nullptr);
}

extern "C" void breakOff(int) {}

extern "C" void onSignal(int number) {
    const int savedErrno = errno;
    startBreakOffTimer();
    if (ending == 0) {
        if (noted == 0) noted = number;
        if (windowOpen != 0) end();
    }
    errno = savedErrno;
}

}  // namespace

void end() {
    ending = 1;
    windowOpen = 0;
    if (settings.verbose && noted != SIGPIPE) {
        printMessage(stdout, "Quiting on signal %d\n", static_cast<int>(noted));
    }
    fatalExit(nullptr);
}

}  // namespace signals

void installSignalHandlers() {
    struct sigaction action {};
    action.sa_handler = signals::breakOff;  // no SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    sigset_t timer;
    sigemptyset(&timer);
    sigaddset(&timer, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &timer, nullptr);
    for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTERM}) {
        std::signal(number, signals::onSignal);
    }
}

void endOnBrokenPipe() {
    std::signal(SIGPIPE, SIG_IGN);
    signals::brokenPipeEnds = true;
}

void beginEnding() { signals::ending = 1; }

bool isEnding() { return signals::ending != 0 || signals::noted != 0; }

void noteBrokenPipe() {
    if (!signals::brokenPipeEnds || isEnding()) return;
    signals::noted = SIGPIPE;
    signals::startBreakOffTimer();
}

}  // namespace sonaprobe
