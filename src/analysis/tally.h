// Counts by key, for a few keys that come in any order, millions of times.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace sonaprobe {

class Tally {
  public:
    Tally() = default;
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

    void add(uint32_t key) {
        Recent& recent = recent_[(key ^ key >> 10) % kRecent];
        if (recent.key != key) [[unlikely]]
            replace(recent, key);
        ++recent.count;
    }

    std::map<uint32_t, uint64_t> counts() const {
        std::map<uint32_t, uint64_t> all = counts_;
        for (const Recent& recent : recent_) put(recent, all);
        return all;
    }

  private:
    static constexpr size_t kRecent = 64;

    struct Recent {
        uint32_t key = 0;
        uint64_t count = 0;
    };

    static void put(const Recent& recent, std::map<uint32_t, uint64_t>& counts) {
        if (recent.count > 0) counts[recent.key] += recent.count;
    }

    void replace(Recent& recent, uint32_t key) { put(std::exchange(recent, {key, 0}), counts_); }

    std::map<uint32_t, uint64_t> counts_;   // but those of
    std::array<Recent, kRecent> recent_{};  // keys that came last, which need no search
};

}  // namespace sonaprobe
