// What a search gave lately: of keys that come again and again, most need no search.

#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace sonaprobe {

// Keeps 2^(Bits + 1) keys. A file can be made whose keys all have one place, and costs a search
// each then, no more.
template <class Key, class Value, unsigned Bits>
class RecentlyFound {
  public:
    // The key's value, by search() unless it is known; `word` is made of all that tells keys apart.
    // What makes room for it is given to leaves(key, value). The reference holds until the
    // next find().
    template <class Search, class Leaves>
    Value& find(uint64_t word, Key key, Search search, Leaves leaves) {
        // Multiplied by an odd number, words that differ in few bits differ in the highest ones.
        Place& place = places_[(word * 0x9E3779B97F4A7C15U) >> (64 - Bits)];
        if (place.later.is(key)) return place.later.value;
        if (place.earlier.is(key)) return place.earlier.value;
        return enter(place, key, search, leaves);
    }

    template <class Search>
    Value& find(uint64_t word, Key key, Search search) {
        return find(word, key, search, [](const Key&, const Value&) {});
    }

    // Calls visit(key, value) for all that is known.
    template <class Visit>
    void forEach(const Visit& visit) const {
        for (const Place& place : places_) {
            for (const Entry* entry : {&place.later, &place.earlier}) {
                if (entry->isKnown) visit(entry->key, entry->value);
            }
        }
    }

  private:
    struct Entry {
        Key key{};
        bool isKnown = false;
        Value value{};

        bool is(const Key& other) const { return isKnown && key == other; }
    };

    // Two keys that often come in turn may well share a place.
    struct Place {
        Entry later;
        Entry earlier;
    };

    // A function of its own, so that those who mostly find keep no registers for it.
    template <class Search, class Leaves>
    [[gnu::noinline]] static Value& enter(Place& place, Key key, Search search, Leaves leaves) {
        if (place.earlier.isKnown) leaves(place.earlier.key, place.earlier.value);
        place.earlier = std::exchange(place.later, {key, true, search()});
        return place.later.value;
    }

    std::vector<Place> places_{size_t{1} << Bits};
};

}  // namespace sonaprobe
