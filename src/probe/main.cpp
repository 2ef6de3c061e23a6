// The main sequence: checks, options, then the first run mode that applies.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <new>
#include <unistd.h>

#include "live/signals.h"
#include "live/streams.h"
#include "platform/platform.h"
#include "probe/collection.h"
#include "probe/fatal_exit.h"
#include "probe/options.h"
#include "probe/output.h"
#include "probe/raw_file.h"
#include "probe/raw_reader.h"
#include "probe/settings.h"
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
    settings.tickDivisor = clockTicksPerMicrosecond();
    linePrinter().setTicksPerMicrosecond(settings.tickDivisor);
}

// Every step may end the program; a signal is taken between two of them.
void setUpLiveTracing() {
    setAudioDebugFlags();
    takeSignal();
    TraceSession& session = traceSession();
    session.allocateBuffer(settings.bufferSize);
    takeSignal();
    session.setUpBuffer({.records = settings.bufferSize,
                         .interestType = settings.interestType,
                         .interestValue1 = settings.interestValue1,
                         .interestValue2 = settings.interestValue2});
    readTimebase();
    if (settings.line.verbose) printBufferInfo();
    takeSignal();
    session.enableTracing(true);
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
    installSignalHandlers(endBySignal);
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
