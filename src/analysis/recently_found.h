// What a search gave lately: of keys that come again and again, most need no search.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sonaprobe {

// Multiplied by an odd number, words that differ in few bits differ in the highest ones.
inline size_t placeByHighBits(uint64_t word, unsigned bits) {
    return (word * 0x9E3779B97F4A7C15U) >> (64 - bits);
}

// A file can be made whose keys all have one place, and costs a search each then, no more.
template <class Key, class Value>
class RecentlyFound {
  public:
    // The key's value, by search() unless it is known; `word` is made of all that tells keys apart.
    template <class Search>
    const Value& find(uint64_t word, const Key& key, const Search& search) {
        Entry& entry = entries_[placeByHighBits(word, kBits)];
        if (!entry.isKnown || entry.key != key) [[unlikely]]
            entry = {key, search(), true};
        return entry.value;
    }

  private:
    static constexpr unsigned kBits = 8;

    struct Entry {
        Key key{};
        Value value{};
        bool isKnown = false;
    };

    std::vector<Entry> entries_{size_t{1} << kBits};
};

}  // namespace sonaprobe
