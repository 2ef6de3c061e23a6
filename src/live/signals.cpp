// Signal handling: noting, the waiting windows, and the timer that breaks off waiting writes.

#include "live/signals.h"

#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <sys/time.h>
#include <unistd.h>

#include "live/streams.h"

namespace sonaprobe {

namespace signals {

volatile std::sig_atomic_t noted = 0;
volatile std::sig_atomic_t windowOpen = 0;

namespace {

volatile std::sig_atomic_t ending = 0;
volatile std::sig_atomic_t timerStarted = 0;
volatile std::sig_atomic_t timerTicks = 0;
bool brokenPipeEnds = false;
void (*endProgram)(int number) = nullptr;

constexpr int kPatience = 2;  // ticks

// The call alone interrupts a blocked write.
extern "C" void breakOff(int) {
    const int savedErrno = errno;
    if (timerTicks <= kPatience) {
        timerTicks = timerTicks + 1;
        if (timerTicks == kPatience) giveUpStream(STDOUT_FILENO);
        if (timerTicks > kPatience) giveUpStream(STDERR_FILENO);
    }
    errno = savedErrno;
}

// signal() restarts a write that waits; the timer's signal does not.
void startBreakOffTimer() {
    if (timerStarted != 0) return;
    timerStarted = 1;
    struct sigaction action {};
    action.sa_handler = breakOff;  // no SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    constexpr timeval kPeriod{.tv_sec = 0, .tv_usec = 300'000};
    constexpr itimerval kTimer{.it_interval = kPeriod, .it_value = kPeriod};
    setitimer(ITIMER_REAL, &kTimer, nullptr);
}

// The timer's signal does what it always does until the timer needs it. Blocked, that is nothing:
// to ignore it comes to the same, and lets the timer through later.
void letTimerThrough() {
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    if (sigismember(&blocked, SIGALRM) == 1) std::signal(SIGALRM, SIG_IGN);
}

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
    endProgram(noted);
    std::abort();  // not reached
}

}  // namespace signals

void installSignalHandlers(void (*end)(int number)) {
    signals::endProgram = end;
    signals::letTimerThrough();
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, SIGALRM);
    for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTERM}) {
        std::signal(number, signals::onSignal);
        sigaddset(&handled, number);
    }
    sigprocmask(SIG_UNBLOCK, &handled, nullptr);
}

void ignoreWriteSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void endOnBrokenPipe() { signals::brokenPipeEnds = true; }

void beginEnding() {
    signals::ending = 1;
    signals::noted = 0;  // it is taken
}

void goOnAfterEnding() {
    constexpr itimerval kNone{};
    setitimer(ITIMER_REAL, &kNone, nullptr);
    signals::timerStarted = 0;
    signals::timerTicks = 0;
    signals::noted = 0;
    signals::ending = 0;
}

bool isEnding() { return signals::ending != 0 || signals::noted != 0; }

bool isOutOfTime() { return signals::timerTicks >= signals::kPatience; }

void noteBrokenPipe() {
    if (!signals::brokenPipeEnds || isEnding()) return;
    signals::noted = SIGPIPE;
    signals::startBreakOffTimer();
}

}  // namespace sonaprobe
