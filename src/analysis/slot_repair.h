// Which slots of a damaged file a repaired one keeps.

#pragma once

#include <cstdint>

#include "analysis/slot_check.h"
#include "analysis/slot_numbers.h"

namespace sonaprobe {

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
