// The slots that were taken out of a file, and the places that they have now.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace sonaprobe {

// Slots of a file, ascending, as stretches without gaps. The first one added has the place 0.
class SlotNumbers {
  public:
    void add(uint64_t slot) {
        if (stretches_.empty() || slot != next_) stretches_.push_back({size_, slot});
        next_ = slot + 1;
        ++size_;
    }
    uint64_t size() const { return size_; }

    // The slot at a place below size().
    uint64_t at(uint64_t place) const;

    // A slot's place; nothing where it was not added.
    std::optional<uint64_t> placeOf(uint64_t slot) const;

    // The place of the last one that is not after the slot, else the first; size() is above 0.
    uint64_t placeNear(uint64_t slot) const;

  private:
    struct Stretch {
        uint64_t place;
        uint64_t slot;
    };

    std::vector<Stretch> stretches_;
    uint64_t size_ = 0;
    uint64_t next_ = 0;  // the slot that goes on with the last stretch
};

}  // namespace sonaprobe
