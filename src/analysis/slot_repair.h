// Which slots of a damaged file a repaired one keeps.

#pragma once

#include <cstdint>
#include <vector>

#include "analysis/slot_check.h"

namespace sonaprobe {

// Slots of a file, ascending, as stretches without gaps.
class SlotNumbers {
  public:
    void add(uint64_t slot);

    // The number of the slot added at a place, from 0; `place` is below size().
    uint64_t at(uint64_t place) const;
    uint64_t size() const { return size_; }

  private:
    struct Stretch {
        uint64_t place;
        uint64_t slot;
    };

    std::vector<Stretch> stretches_;
    uint64_t size_ = 0;
    uint64_t next_ = 0;  // the slot that goes on with the last stretch
};

// What is kept of a damaged file may look otherwise where what was in between is gone. It is read
// again, then, and slots that are none any more are left out, until all that is kept is sound.
class SlotRepair {
  public:
    // The next thing in the file, or in what was kept of it. Whether it is kept.
    bool take(const Found& found);

    // After the last. Whether what was kept must be taken once more, from its begin.
    bool finish();

    // What is in the file and wrong with it, slots left out later among it.
    const SlotCheck& slots() const { return slots_; }
    uint64_t kept() const { return kept_.size(); }

  private:
    bool takeAgain(const Found& found);

    SlotCheck slots_;
    SlotNumbers kept_;
    // While what was kept is taken again:
    bool again_ = false;
    SlotCheck check_;
    SlotNumbers before_;  // what had been kept
};

}  // namespace sonaprobe
