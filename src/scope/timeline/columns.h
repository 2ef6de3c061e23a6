// How columns of numbers are stored on the timeline's page: docs/timeline-page.md.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace sonaprobe::scope::timeline {

// Numbers of any size, seven bits a byte, the lowest first; the highest bit says that more follow.
void putNumber(std::string& bytes, uint64_t number);

// The same of what may be negative: 0, -1, 1, -2, 2 become 0, 1, 2, 3, 4.
constexpr uint64_t zigzag(int64_t number) {
    return static_cast<uint64_t>(number) << 1 ^ static_cast<uint64_t>(number >> 63);
}
constexpr uint32_t zigzag(int32_t number) {
    return static_cast<uint32_t>(number) << 1 ^ static_cast<uint32_t>(number >> 31);
}
inline void putSigned(std::string& bytes, int64_t number) { putNumber(bytes, zigzag(number)); }

// A column's numbers, most of them small. Each has a byte among the heads: itself, or how many
// bytes it takes. Those stand in planes, the lowest byte of all numbers in the first: bytes alike
// in their spread stand together, which is what deflating wants.
class Columns {
  public:
    static constexpr uint64_t kFirstLength = 248;  // a head from here on is a length, 1 to 8

    void put(uint64_t number) { heads_.push_back(headOf(number)); }

    // Of many: numberAt(0), numberAt(1), and so on.
    template <class NumberAt>
    void putAll(size_t count, NumberAt numberAt) {
        const size_t begin = heads_.size();
        heads_.resize(begin + count);
        // A pointer of its own, as bytes that are written through the vector's could be its own.
        char* head = heads_.data() + begin;
        for (size_t i = 0; i < count; ++i) *head++ = headOf(numberAt(i));
    }

    // Heads and planes, each after its length.
    void appendTo(std::string& bytes) const;

    // A heading after its length, then the same.
    std::string below(const std::string& heading) const;

  private:
    // Puts the bytes of a number that is not its own head.
    char headOf(uint64_t number) {
        return number < kFirstLength ? static_cast<char>(number) : putLong(number);
    }
    char putLong(uint64_t number);

    // Bytes are added to these faster than to strings.
    std::vector<char> heads_;
    std::array<std::vector<char>, 8> planes_;
};

// Deflated, with zlib's head and sum around it.
std::string deflated(const std::string& bytes);

// Bytes as characters of a page whose charset is ISO-8859-15: those that HTML would change, and
// those that would make the browser take two bytes a character, stand after "=", 64 higher.
std::string asPageText(const std::string& bytes);

}  // namespace sonaprobe::scope::timeline
