// Which slots of a file are worth keeping, and what is wrong with the others.

#pragma once

#include <cstdint>
#include <optional>

#include "analysis/finding.h"
#include "analysis/slot_finder.h"

namespace sonaprobe {

class SlotCheck {
  public:
    // The next thing in the file. Whether a repaired file keeps it: records, and divisors that put
    // another value in force.
    bool take(const Found& found);

    // The same of records without any doubt, which are all kept.
    void take(const RecordRun& run);

    // After the last.
    void finish() { settleDamage(false); }

    const Findings& findings() const { return findings_; }
    Findings& findings() { return findings_; }

    uint64_t slots() const { return slots_; }  // whole ones, of whatever kind
    uint64_t records() const { return records_; }

  private:
    void settleDamage(bool slotsGoOn);
    void takeOrder(const Found& slot);
    bool takeDivisor(const Found& slot);
    void takeRecords(uint64_t firstSlot, uint64_t count);

    Findings findings_;
    std::optional<Found> damage_;  // of which it is not yet known whether slots go on after it
    ByteOrder order_ = ByteOrder::own;
    std::optional<uint64_t> divisor_;
    uint64_t slots_ = 0;
    uint64_t records_ = 0;
};

}  // namespace sonaprobe
