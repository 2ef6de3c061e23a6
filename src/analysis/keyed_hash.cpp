// The run's seed.

#include "analysis/keyed_hash.h"

#include <random>

namespace sonaprobe {

namespace {

// Odd, so that neither factor of the product is ever 0 for all keys of one word.
uint64_t randomWord() {
    std::random_device device;
    return uint64_t{device()} << 32 | device() | 1;
}

}  // namespace

HashSeed makeHashSeed() { return {randomWord(), randomWord()}; }

}  // namespace sonaprobe
