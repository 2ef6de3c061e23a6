// The cleanup-and-exit path.

#include "probe/fatal_exit.h"

#include <cstdio>
#include <cstdlib>

#include "probe/audio_debug_flags.h"
#include "probe/output.h"
#include "probe/raw_file.h"
#include "probe/settings.h"
#include "probe/signals.h"
#include "probe/tracing.h"

namespace sonaprobe {

void fatalExit(const char* message) {
    static const char* newestMessage = nullptr;
    static bool disableTried = false;
    beginEnding();
    if (message != nullptr) newestMessage = message;

    if (settings.decodeFile != nullptr) {
        std::fclose(settings.decodeFile);
        settings.decodeFile = nullptr;
    }
    closeRawFile();
    if (settings.traceEnabled && !disableTried) {
        disableTried = true;
        enableTracing(0);
    }
    if (settings.removeOnExit) removeTraceBuffer();
    restoreAudioDebugFlags();
    if (newestMessage == nullptr) std::exit(EXIT_SUCCESS);
    printMessage(stderr, "%s: %s\n", settings.programName, newestMessage);
    std::exit(EXIT_FAILURE);
}

}  // namespace sonaprobe
