// How the four signals and a broken pipe end the program: at once in a declared window, where the
// program waits, everywhere else between two records, two blocks of stored records or two set-up
// steps. So no code but the windows needs to be safe against a signal.

#pragma once

#include <csignal>

namespace sonaprobe {

// SIGINT, SIGQUIT, SIGHUP and SIGTERM from now on end the program, also where it was started with
// them blocked: `end` is called with the signal's number, SIGPIPE for a broken pipe, and does not
// come back. A window calls it from within the handler.
void installSignalHandlers(void (*end)(int number));

// A write to a pipe that nobody reads, or to a file that grows too large, fails from now on like
// others: no signal of it ends the program.
void ignoreWriteSignals();

// From now on a broken pipe on standard output ends the program as a signal does, silently.
void endOnBrokenPipe();

// No signal ends the program from now on, for it is ending; each only makes sure that no write and
// no operation of the facility waits longer than 0.3 s, and all writes together not longer than
// 0.9 s.
void beginEnding();

// What had to be ended is ended, and the program goes on: signals are noted again, and its writes
// may wait.
void goOnAfterEnding();

// Whether an end is noted or under way.
bool isEnding();

// Whether the end has taken 0.6 s: time to give up what somebody reads, but too slowly. Standard
// output is given up by then, standard error, which may have to say so, after 0.9 s.
bool isOutOfTime();

// Ends the program if a signal was noted. For the places between two records, blocks or steps.
void takeSignal();

// Notes that nobody reads standard output any more, if that ends the program.
void noteBrokenPipe();

namespace signals {

extern volatile std::sig_atomic_t noted;  // number of the signal, SIGPIPE for a broken pipe, or 0
extern volatile std::sig_atomic_t windowOpen;
[[noreturn]] void end();

}  // namespace signals

inline void takeSignal() {
    if (signals::noted != 0) signals::end();
}

// While one exists a signal ends the program at once: around system calls that may wait, and
// nothing else, stdio and memory allocation least of all.
class WaitingWindow {
  public:
    WaitingWindow() {
        signals::windowOpen = 1;
        takeSignal();
    }
    ~WaitingWindow() { signals::windowOpen = 0; }
    WaitingWindow(const WaitingWindow&) = delete;
    WaitingWindow& operator=(const WaitingWindow&) = delete;
};

}  // namespace sonaprobe
