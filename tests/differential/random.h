// The random numbers of a run, from a seed that the environment may give.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <random>

namespace sonaprobe::differential {

class Random {
  public:
    explicit Random(uint64_t seed) : engine_(seed) {}

    uint64_t bits() { return engine_(); }
    uint64_t below(uint64_t limit) { return engine_() % limit; }
    bool oneIn(uint64_t n) { return below(n) == 0; }

    template <typename T>
    T oneOf(std::initializer_list<T> values) {
        return values.begin()[below(values.size())];
    }

  private:
    std::mt19937_64 engine_;
};

inline uint64_t numberFromEnvironment(const char* name, uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 0) : otherwise;
}

inline uint64_t seedOfRun() { return numberFromEnvironment("SONAPROBE_DIFFERENTIAL_SEED", 2026); }

}  // namespace sonaprobe::differential
