// Writing slots. The bytes go to the file's descriptor and not through stdio's buffer, which would
// hide which record a failed write has cost.

#include "rawfile/raw_writer.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace sonaprobe {

namespace {

bool isRegular(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

RawWriter::~RawWriter() {
    writeHeld();
    ::close(file_);
}

// The bytes that reached the file; fewer than given only with errno set.
size_t RawWriter::writeBytes(std::span<const std::byte> bytes) {
    size_t written = 0;
    while (written < bytes.size() && !givenUp_) {
        const ssize_t now = ::write(file_, bytes.data() + written, bytes.size() - written);
        if (now < 0 && errno != EINTR) return written;
        if (now > 0) written += static_cast<size_t>(now);
        if (written == bytes.size()) break;
        givenUp_ = !policy_.goesOn(now < 0 ? Broken::bySignal : Broken::inPart);
    }
    if (written < bytes.size()) errno = EINTR;
    return written;
}

// Writes slots from where the file stands, and returns how many. If not all of them fit, a regular
// file is put back to where it stood and none counts; elsewhere the whole slots that went out do.
size_t RawWriter::writeSlots(std::span<const TraceRecord> slots) {
    const std::span<const std::byte> bytes = std::as_bytes(slots);
    const size_t written = writeBytes(bytes);
    if (written == bytes.size()) return slots.size();
    const int error = errno;
    size_t stored = written / sizeof(TraceRecord);
    if (isRegular(file_)) {
        const off_t begin = lseek(file_, 0, SEEK_CUR) - static_cast<off_t>(written);
        if (ftruncate(file_, begin) == 0 && lseek(file_, begin, SEEK_SET) == begin) stored = 0;
    }
    errno = error;
    return stored;
}

int RawWriter::writeDivisor(uint64_t ticksPerMicrosecond) {
    TraceRecord slot{};
    slot.timestamp = ticksPerMicrosecond;
    slot.debugid = kDivisorMarker;
    writeHeld();
    return writeSlots({&slot, 1}) == 1 ? 0 : errno;
}

void RawWriter::store(const TraceRecord& record) {
    TraceRecord& slot = block_[held_++];
    slot = record;
    slot.reserved = 0;
    if (held_ == kBlockSlots) writeHeld();
}

void RawWriter::writeHeld() {
    const std::span<const TraceRecord> slots = std::span(block_).first(held_);
    held_ = 0;
    const size_t written = writeSlots(slots);
    for (const TraceRecord& slot : slots.subspan(written)) {
        if (writeSlots({&slot, 1}) == 0) policy_.lost(slot, errno);
    }
}

}  // namespace sonaprobe
