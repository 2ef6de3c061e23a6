// Counts by key, for a few keys that come in any order, millions of times.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>

namespace sonaprobe {

class Tally {
  public:
    Tally() = default;
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

    void add(uint32_t key) {
        Known& known = known_[(key ^ key >> 10) % kKnown];
        if (known.count == nullptr || known.key != key) known = {key, &counts_[key]};
        ++*known.count;
    }

    const std::map<uint32_t, uint64_t>& counts() const { return counts_; }

  private:
    static constexpr size_t kKnown = 64;

    struct Known {
        uint32_t key = 0;
        uint64_t* count = nullptr;
    };

    std::map<uint32_t, uint64_t> counts_;
    std::array<Known, kKnown> known_{};  // keys that came last, which need no search
};

}  // namespace sonaprobe
