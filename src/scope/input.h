// A trace as commands read it: its slots in the order of the file.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/trace_clock.h"
#include "record/trace_record.h"
#include "scope/byte_source.h"
#include "scope/options.h"
#include "scope/progress.h"

namespace sonaprobe::scope {

// Whether a file in which no slot looks like one is refused, or read as it is.
enum class Accept : uint8_t { traces, anything };

// What is read of a file that is searched: its first slots, and those of a stretch.
struct SortedPart {
    uint64_t head;     // number of slots
    uint64_t begin;    // slot; not before the head's end
    uint64_t end;      // slot, not included
    uint64_t divisor;  // in force at the head's end
};

class Input {
  public:
    // Throws a Failure where the trace's file cannot be opened.
    explicit Input(const TraceOptions& trace, Accept accept = Accept::traces);

    // The next slots, divisors, invalid and empty ones included; none at the end. They hold until
    // the next call. Throws a Failure where the file cannot be read, or is no trace.
    std::span<const TraceRecord> next();

    // The number of the first slot of what next() returned last.
    uint64_t firstSlot() const { return firstSlot_; }

    // Leaves out what is not in the part; of a file alone that is not packed, before next().
    void readOnly(const SortedPart& part) { part_ = part; }
    const std::optional<SortedPart>& part() const { return part_; }

    // At the end: the bytes of a last slot that is cut short.
    size_t cutBytes() const { return rest_; }

    const ByteSource& source() const { return source_; }

    static constexpr size_t kBlockSlots = 4096;  // that next() gives at most

  private:
    void goOnInPart();
    uint64_t slotsLeft() const;
    void recognise(std::span<const std::byte> begin);

    ByteSource source_;
    bool recognised_;  // as a trace, or not to be
    Progress progress_;
    std::vector<TraceRecord> block_;
    size_t given_ = 0;  // slots that next() returned last
    size_t rest_ = 0;   // bytes of the block after them
    uint64_t firstSlot_ = 0;
    std::optional<SortedPart> part_;
};

// At the end, for commands that have no findings: tells on standard error what is wrong with packed
// data.
void warnOfDamage(const Input& input);

// The same, where there were records before the first divisor.
void warnOfAssumedDivisor(const Input& input, const TraceClock& clock);

}  // namespace sonaprobe::scope
