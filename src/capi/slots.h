// The slots of a raw file one by one, from a descriptor or from memory.

#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "rawfile/slot_reader.h"

namespace sonaprobe {

class Slots {
  public:
    enum class Closing { byCaller, withSlots };

    // Reads `file`, which is the caller's or is closed with this object.
    Slots(int file, Closing closing);
    // Reads bytes that outlive this object.
    explicit Slots(std::span<const std::byte> bytes) : bytes_(bytes) {}
    ~Slots();
    Slots(const Slots&) = delete;
    Slots& operator=(const Slots&) = delete;

    // 1 and the next slot, 0 at the end, or the read's error as a negative errno value.
    int next(TraceRecord& slot);

    // At the end: the bytes of a last slot that is not whole.
    size_t cutBytes() const { return reader_ ? reader_->cutBytes() : bytes_.size(); }

  private:
    int ownFile_ = -1;
    std::optional<SlotReader> reader_;   // none for bytes
    std::span<const TraceRecord> read_;  // and not handed out yet
    std::span<const std::byte> bytes_;
};

}  // namespace sonaprobe
