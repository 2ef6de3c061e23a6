// Writing a raw trace file: a divisor slot, then a slot a record.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "record/trace_record.h"

namespace sonaprobe {

// Owns an open file and writes slots from where it stands. Records are held back and written in
// blocks. One that cannot be written leaves no part of a slot behind in a regular file.
class RawWriter {
  public:
    // Why a write has not taken all of its bytes.
    enum class Broken { bySignal, inPart };

    // What its user does about failures.
    struct Policy {
        // Told of each record that was not written, with its errno.
        void (*lost)(const TraceRecord& record, int error);
        // Whether to go on with a write that was broken off. After a no nothing is written any
        // more, and each record that comes is lost with EINTR.
        bool (*goesOn)(Broken) = [](Broken) { return true; };
    };

    // Takes over the descriptor of a file that is open for writing.
    RawWriter(int file, Policy policy) : file_(file), policy_(policy) {}
    RawWriter(const RawWriter&) = delete;
    RawWriter& operator=(const RawWriter&) = delete;

    // Writes what is held back, and closes the file.
    ~RawWriter();

    // Writes a slot that says how many ticks a microsecond the slots after it have. 0, or errno.
    int writeDivisor(uint64_t ticksPerMicrosecond);

    // Holds a record back, its reserved word as 0, and writes what is held once that is a block.
    void store(const TraceRecord& record);

    // Writes what is held back.
    void writeHeld();

    static constexpr size_t kBlockSlots = 1024;

  private:
    size_t writeBytes(std::span<const std::byte> bytes);
    size_t writeSlots(std::span<const TraceRecord> slots);

    int file_;
    Policy policy_;
    bool givenUp_ = false;
    size_t held_ = 0;
    std::array<TraceRecord, kBlockSlots> block_{};
};

}  // namespace sonaprobe
