// sonaprobe-sim hold: owns the facility until a signal comes.

#include <csignal>
#include <cstdio>
#include <unistd.h>

#include "platform/standin/facility.h"
#include "sim/arguments.h"
#include "sim/messages.h"

namespace sonaprobe::sim {

int runHold(Arguments arguments) {
    if (!readArguments(arguments, {}, {})) return 1;
    const int error = standin::holdFacility();
    if (error != 0) return facilityFailure("hold the facility", error);
    sigset_t awaited;
    sigemptyset(&awaited);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&awaited, signal);
    sigprocmask(SIG_BLOCK, &awaited, nullptr);
    std::printf("process %d owns the trace facility until a signal\n", getpid());
    std::fflush(stdout);
    int signal;
    sigwait(&awaited, &signal);
    return 0;
}

}  // namespace sonaprobe::sim
