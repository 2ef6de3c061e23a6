// The cleanup-and-exit path.

#include "probe/fatal_exit.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "live/signals.h"
#include "probe/output.h"
#include "probe/raw_file.h"
#include "probe/settings.h"
#include "probe/tracing.h"

namespace sonaprobe {

void fatalExit(const char* message) {
    static const char* newestMessage = nullptr;
    beginEnding();
    if (message != nullptr) newestMessage = message;

    if (settings.decodeFile != nullptr) {
        std::fclose(settings.decodeFile);
        settings.decodeFile = nullptr;
    }
    closeRawFile();
    const char* const failure = traceSession().cleanUp();
    if (failure != nullptr) newestMessage = failure;
    if (newestMessage == nullptr) std::exit(EXIT_SUCCESS);
    printMessage(stderr, "%s: %s\n", settings.programName, newestMessage);
    std::exit(EXIT_FAILURE);
}

void endBySignal(int number) {
    if (settings.line.verbose && number != SIGPIPE) {
        printMessage(stdout, "Quiting on signal %d\n", number);
    }
    fatalExit(nullptr);
}

}  // namespace sonaprobe
