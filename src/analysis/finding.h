// What is wrong with a trace file, each with its place.

#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "analysis/call_check.h"

namespace sonaprobe {

enum class FindingKind : uint8_t {
    misaligned,      // slots begin at another place of their 64 bytes from here on
    garbage,         // whole slots that are none
    otherByteOrder,  // slots of a machine of the other byte order
    cutSlot,         // the last slot is cut short
    noDivisor,       // records without a divisor in force
    zeroDivisor,
    repeatedDivisor,  // of the value that is in force
    invalidSlots,
    emptySlots,
    stepBack,        // the clock
    missingRecords,  // a suspicion: see MissingStretch
};
constexpr size_t kFindingKinds = 11;

struct Finding {
    FindingKind kind{};
    uint64_t slot = 0;      // where it begins
    uint64_t lastSlot = 0;  // where it ends
    uint64_t bytes = 0;     // misaligned, garbage, cutSlot: that are no slot
    uint64_t goesOnAt = 0;  // misaligned: byte of the file at which slots go on
    Nanoseconds back = 0;   // stepBack: to before the latest record, above 0
    MissingStretch missing{};

    uint64_t slots() const { return lastSlot - slot + 1; }
};

// The findings of one file. A file may be wrong in every slot: of each kind the first ones are
// kept.
class Findings {
  public:
    static constexpr size_t kMostKept = 1000;

    // One that begins right after the last of its kind ends, without bytes of its own, is the same.
    void add(const Finding& finding);

    // By their slots.
    std::vector<Finding> all() const;

    bool none() const { return all_.empty(); }

    // How many there were of a kind, with those that were not kept.
    uint64_t count(FindingKind kind) const { return kinds_[static_cast<size_t>(kind)].count; }

    // The last one of a kind, to be extended; null where there is none, or it was not kept.
    Finding* last(FindingKind kind);

  private:
    struct Kind {
        uint64_t count = 0;
        size_t last = 0;        // place of the last one kept
        uint64_t lastSlot = 0;  // where the last one ended, kept or not
    };

    std::vector<Finding> all_;
    std::array<Kind, kFindingKinds> kinds_;
};

}  // namespace sonaprobe
