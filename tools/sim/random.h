// Chance that is the same on every host: splitmix64 from a seed.

#pragma once

#include <cstdint>

namespace sonaprobe::sim {

struct Random {
    uint64_t state = 0;
};

constexpr uint64_t draw(Random& random) {
    random.state += 0x9E3779B97F4A7C15;
    uint64_t mixed = random.state;
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
    return mixed ^ mixed >> 31;
}

// From least to most, which are less than 2^32 apart.
constexpr uint64_t drawBetween(Random& random, uint64_t least, uint64_t most) {
    const uint64_t choices = most - least + 1;
    return least + ((draw(random) >> 32) * choices >> 32);
}

}  // namespace sonaprobe::sim
