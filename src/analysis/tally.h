// Counts by key, for a few keys that come in any order, millions of times.

#pragma once

#include <cstdint>
#include <map>

#include "analysis/recently_found.h"

namespace sonaprobe {

class Tally {
  public:
    void add(uint32_t key) {
        ++recent_.find(
            key, key, [] { return uint64_t{0}; },
            [this](uint32_t other, uint64_t count) { counts_[other] += count; });
    }

    std::map<uint32_t, uint64_t> counts() const {
        std::map<uint32_t, uint64_t> all = counts_;
        recent_.forEach([&](uint32_t key, uint64_t count) { all[key] += count; });
        return all;
    }

  private:
    std::map<uint32_t, uint64_t> counts_;  // but those of
    RecentlyFound<uint32_t, uint64_t, 6> recent_;
};

}  // namespace sonaprobe
