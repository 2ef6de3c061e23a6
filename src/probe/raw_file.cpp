// The raw file of live write mode, and its messages.

#include "probe/raw_file.h"

#include <cinttypes>
#include <fcntl.h>
#include <optional>

#include "live/signals.h"
#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "rawfile/raw_writer.h"
#include "record/truncate.h"

namespace sonaprobe {

namespace {

constinit std::optional<RawWriter> rawFile;

void reportLost(const TraceRecord& record, int error) {
    printMessage(stderr,
                 "Error %d occurred writing data with debugid 0x%x and timestamp 0x%" PRIx64 "\n",
                 error, record.debugid, record.timestamp);
}

// As the program ends, nobody takes the bytes, or too slowly.
bool goesOn(RawWriter::Broken broken) {
    return broken == RawWriter::Broken::bySignal ? !isEnding() : !isOutOfTime();
}

}  // namespace

RawWriter& openRawFile() {
    constexpr mode_t kAsTheMaskLeaves = 0666;
    const int file =
        ::open(settings.rawPath, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, kAsTheMaskLeaves);
    if (file < 0) fatalExit("Can't open file!\n");
    rawFile.emplace(file, RawWriter::Policy{.lost = reportLost, .goesOn = goesOn});
    const uint64_t divisor = truncateToUnsigned(settings.tickDivisor);
    if (settings.line.verbose) {
        printMessage(stdout, "Inserting divisor %f as 0x%" PRIx64 "\n", settings.tickDivisor,
                     divisor);
    }
    const int error = rawFile->writeDivisor(divisor);
    if (error != 0) printMessage(stderr, "Error %d writing divisor data\n", error);
    return *rawFile;
}

void closeRawFile() { rawFile.reset(); }

}  // namespace sonaprobe
