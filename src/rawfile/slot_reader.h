// Bytes of a raw trace file to slots.

#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <unistd.h>

#include "record/trace_record.h"

namespace sonaprobe {

// Reads a file, pipe or device of any length in constant memory.
class SlotReader {
  public:
    using Read = ssize_t (*)(int file, void* room, size_t length);  // as read(2)

    // Reads the open descriptor `file`, which stays the caller's, by `read`.
    explicit SlotReader(int file, Read read = ::read);

    // The next slots in the file's order, divisor and invalid ones included; valid until the next
    // call. Empty at the end, or where reading fails.
    std::span<const TraceRecord> next();

    // At the end: how many bytes of a last slot there are that is not whole, 0 to 63, and the errno
    // of the read that failed, 0 at the file's end.
    size_t cutBytes() const { return filled_ - used_; }
    int error() const { return error_; }

  private:
    int file_;
    Read read_;
    int error_ = 0;
    size_t filled_ = 0;  // bytes of the block
    size_t used_ = 0;    // bytes of it that were handed out
    std::unique_ptr<TraceRecord[]> block_;
};

}  // namespace sonaprobe
