// The main sequence: checks, options, then the first run mode that applies.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <new>
#include <unistd.h>

#include "platform/platform.h"
#include "probe/audio_debug_flags.h"
#include "probe/collection.h"
#include "probe/fatal_exit.h"
#include "probe/options.h"
#include "probe/output.h"
#include "probe/raw_file.h"
#include "probe/raw_reader.h"
#include "probe/settings.h"
#include "probe/signals.h"
#include "probe/tracing.h"

namespace sonaprobe {

namespace {

// Descriptors 0 to 2 are in use from the start, so that no data file becomes a standard stream.
void fillStandardDescriptors() {
    int file;
    do {
        file = openNowhere();
    } while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) close(file);
}

// With a reserve, for the cleanup takes memory too.
void endWhereMemoryRunsOut() {
    static auto reserve = std::make_unique_for_overwrite<char[]>(1 << 20);
    std::set_new_handler([] {
        reserve.reset();
        fatalExit("Can't allocate memory\n");
    });
}

void readTimebase() {
    mach_timebase_info_data_t timebase{};
    mach_timebase_info(&timebase);
    settings.tickDivisor =
        static_cast<double>(timebase.denom) / static_cast<double>(timebase.numer) * 1000.0;
    linePrinter().setTicksPerMicrosecond(settings.tickDivisor);
}

// Every step may end the program; a signal is taken between two of them.
void setUpLiveTracing() {
    setAudioDebugFlags();
    takeSignal();
    allocateCollectionBuffer();
    takeSignal();
    removeTraceBuffer();
    takeSignal();
    setTraceBufferSize(settings.bufferSize);
    takeSignal();
    setTraceInterest(settings.interestType);
    takeSignal();
    setupTraceBuffer();
    takeSignal();
    readTimebase();
    if (settings.line.verbose) printBufferInfo();
    takeSignal();
    enableTracing(1);
    takeSignal();
}

[[noreturn]] void printForEver() {
    for (;;) {
        collectAndPrint();
        sleepBetweenPasses();
    }
}

[[noreturn]] void writeForEver() {
    RawWriter& rawFile = openRawFile();
    for (;;) {
        writeRawRecords(rawFile);
        sleepBetweenPasses();
    }
}

int run(int argc, char** argv) {
    settings.programName = argv[0] != nullptr ? argv[0] : "sonaprobe";
    if (geteuid() != 0) {
        std::fprintf(stderr, "'%s' must be run as root.\n", settings.programName);
        return EXIT_FAILURE;
    }
    if (reexec_to_match_kernel() != 0) {
        std::fprintf(stderr, "Could not re-execute to match kernel architecture. (Error %d)\n",
                     errno);
        return EXIT_FAILURE;
    }
    fillStandardDescriptors();
    endWhereMemoryRunsOut();
    parseOptions(argc, argv);

    if (settings.dumpOnce) {
        openOutput();
        dumpOnceWithAlloc();
        return EXIT_SUCCESS;
    }
    installSignalHandlers();
    if (settings.readRaw) {
        openOutput();
        readRawFile(settings.rawPath);
        beginEnding();
        return EXIT_SUCCESS;
    }
    ignoreWriteSignals();
    if (!settings.noLog) endOnBrokenPipe();
    openOutput();
    setUpLiveTracing();
    if (settings.noLog) {
        beginEnding();
        return EXIT_SUCCESS;
    }
    if (settings.writeRaw) writeForEver();
    printForEver();
}

}  // namespace

}  // namespace sonaprobe

int main(int argc, char** argv) { return sonaprobe::run(argc, argv); }
