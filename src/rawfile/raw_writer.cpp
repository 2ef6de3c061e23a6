// Writing slots. The bytes go to the file's descriptor and not through stdio's buffer, which would
// hide which record a failed write has cost.

#include "rawfile/raw_writer.h"

#include <array>
#include <bit>
#include <cerrno>
#include <cinttypes>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

#include "probe/output.h"
#include "probe/settings.h"
#include "probe/signals.h"
#include "record/truncate.h"

namespace sonaprobe {

namespace {

constexpr size_t kBlockSlots = 1024;

std::array<TraceRecord, kBlockSlots> block;
size_t held = 0;
bool givenUp = false;  // as the program ends, nobody takes the bytes, or too slowly

bool isRegular(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

// The bytes that reached the file; fewer than given only with errno set.
size_t writeBytes(int file, std::span<const std::byte> bytes) {
    size_t written = 0;
    while (written < bytes.size() && !givenUp) {
        const ssize_t now = ::write(file, bytes.data() + written, bytes.size() - written);
        if (now < 0 && errno != EINTR) return written;
        if (now > 0) written += static_cast<size_t>(now);
        if (written < bytes.size()) givenUp = now < 0 ? isEnding() : isOutOfTime();
    }
    if (givenUp) errno = EINTR;
    return written;
}

// Writes slots from where the file stands. If not all of them fit, a regular file is put back to
// where it stood and none counts; elsewhere the whole slots that went out do.
size_t writeSlots(std::FILE* rawFile, std::span<const TraceRecord> slots) {
    const int file = fileno(rawFile);
    const std::span<const std::byte> bytes = std::as_bytes(slots);
    const size_t written = writeBytes(file, bytes);
    if (written == bytes.size()) return slots.size();
    const int error = errno;
    size_t stored = written / sizeof(TraceRecord);
    if (isRegular(file)) {
        const off_t begin = lseek(file, 0, SEEK_CUR) - static_cast<off_t>(written);
        if (ftruncate(file, begin) == 0 && lseek(file, begin, SEEK_SET) == begin) stored = 0;
    }
    errno = error;
    return stored;
}

void reportLost(const TraceRecord& slot) {
    printMessage(stderr,
                 "Error %d occurred writing data with debugid 0x%x and timestamp 0x%" PRIx64 "\n",
                 errno, slot.debugid, slot.timestamp);
}

}  // namespace

void writeDivisorRecord(std::FILE* rawFile) {
    TraceRecord slot{};
    slot.timestamp = truncateToUnsigned(settings.tickDivisor);
    slot.debugid = kDivisorMarker;
    if (settings.line.verbose) {
        printMessage(stdout, "Inserting divisor %f as 0x%" PRIx64 "\n", settings.tickDivisor,
                     slot.timestamp);
    }
    if (writeSlots(rawFile, {&slot, 1}) == 0) {
        printMessage(stderr, "Error %d writing divisor data\n", errno);
    }
}

void storeRecord(std::FILE* rawFile, const TraceRecord& record) {
    TraceRecord& slot = block[held++];
    slot = record;
    slot.reserved = 0;
    if (held == kBlockSlots) storeHeldRecords(rawFile);
}

void storeHeldRecords(std::FILE* rawFile) {
    const std::span<const TraceRecord> slots = std::span(block).first(held);
    held = 0;
    const size_t stored = writeSlots(rawFile, slots);
    for (const TraceRecord& slot : slots.subspan(stored)) {
        if (writeSlots(rawFile, {&slot, 1}) == 0) reportLost(slot);
    }
}

void closeRawFile() {
    if (settings.rawFile == nullptr) return;
    storeHeldRecords(settings.rawFile);
    std::fclose(settings.rawFile);
    settings.rawFile = nullptr;
}

}  // namespace sonaprobe
