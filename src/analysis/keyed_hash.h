// The hash of what a file says: seeded anew in each run, so that no file can be made whose values
// all meet in one place.

#pragma once

#include <cstddef>
#include <cstdint>

namespace sonaprobe {

__extension__ using Wide = __int128;
__extension__ using UnsignedWide = unsigned __int128;

struct HashSeed {
    uint64_t first;
    uint64_t second;
};

HashSeed makeHashSeed();

// The same during the whole run.
inline const HashSeed& hashSeed() {
    static const HashSeed seed = makeHashSeed();
    return seed;
}

// The product of both words, folded: each bit of the result hangs on all bits of both.
inline size_t keyedHash(uint64_t first, uint64_t second) {
    const HashSeed& seed = hashSeed();
    const UnsignedWide product = UnsignedWide{first ^ seed.first} * (second ^ seed.second);
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

}  // namespace sonaprobe
