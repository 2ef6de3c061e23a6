// Reading slots in blocks.

#include "rawfile/slot_reader.h"

#include <cerrno>
#include <cstring>

namespace sonaprobe {

namespace {

constexpr size_t kBlockSlots = 2048;  // 128 KiB

}  // namespace

SlotReader::SlotReader(int file, Read read)
    : file_(file),
      read_(read),
      block_(std::make_unique_for_overwrite<TraceRecord[]>(kBlockSlots)) {}

std::span<const TraceRecord> SlotReader::next() {
    const std::span<std::byte> room = std::as_writable_bytes(std::span(block_.get(), kBlockSlots));
    filled_ -= used_;
    std::memmove(room.data(), room.data() + used_, filled_);
    used_ = 0;
    error_ = 0;
    while (filled_ < sizeof(TraceRecord)) {
        const ssize_t got = read_(file_, room.data() + filled_, room.size() - filled_);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) error_ = errno;
        if (got <= 0) return {};
        filled_ += static_cast<size_t>(got);
    }
    const size_t slots = filled_ / sizeof(TraceRecord);
    used_ = slots * sizeof(TraceRecord);
    return {block_.get(), slots};
}

}  // namespace sonaprobe
