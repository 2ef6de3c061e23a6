// What the fuzz targets share: the entry that libFuzzer and the replay call, a check, and numbers
// taken from the input.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace sonaprobe::fuzz {

// Ends the program where something that must hold does not.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

// The input, taken piece by piece; zeros where it has come to its end.
class Input {
  public:
    Input(const uint8_t* data, size_t size) : left_(data, size) {}

    bool atEnd() const { return left_.empty(); }

    std::span<const uint8_t> bytes(size_t count) {
        const auto taken = left_.first(std::min(count, left_.size()));
        left_ = left_.subspan(taken.size());
        return taken;
    }
    std::span<const uint8_t> rest() { return bytes(left_.size()); }

    template <class T>
    T number() {
        T value{};
        const auto taken = bytes(sizeof value);
        if (!taken.empty()) std::memcpy(&value, taken.data(), taken.size());
        return value;
    }

  private:
    std::span<const uint8_t> left_;
};

}  // namespace sonaprobe::fuzz
