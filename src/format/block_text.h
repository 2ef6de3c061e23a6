// Texts that are copied in whole blocks, so that no copy waits for their length: names and the
// words between the values of a line.

#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace sonaprobe {

constexpr size_t kTextBlock = 32;

inline constexpr char kEmptyBlock[kTextBlock] = {};

// A text behind whose end kTextBlock more characters can be read, whatever they are. Who makes one
// from other texts sees to that.
class BlockText : public std::string_view {
  public:
    constexpr BlockText() : BlockText(kEmptyBlock, 0) {}
    constexpr BlockText(const char* begin, size_t length) : std::string_view(begin, length) {}

    constexpr BlockText part(size_t begin, size_t length) const { return {data() + begin, length}; }
};

// Writes the text, and up to kTextBlock characters behind it. Returns the place behind the text.
inline char* putBlocks(char* at, BlockText text) {
    std::memcpy(at, text.data(), kTextBlock);
    for (size_t done = kTextBlock; done < text.size(); done += kTextBlock) {
        std::memcpy(at + done, text.data() + done, kTextBlock);
    }
    return at + text.size();
}

}  // namespace sonaprobe
