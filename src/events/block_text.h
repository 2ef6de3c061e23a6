// Texts that are copied in whole blocks, so that no copy waits for their length: names and the
// words between the values of a line.

#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace sonaprobe {

constexpr size_t kTextBlock = 32;

inline constexpr char kEmptyBlock[kTextBlock] = {};

// A text after whose end kTextBlock more characters can be read, whatever they are. Who makes one
// from other texts sees to that.
struct BlockText {
    const char* begin = kEmptyBlock;
    size_t length = 0;

    constexpr std::string_view view() const { return {begin, length}; }
    constexpr BlockText part(size_t first, size_t count) const { return {begin + first, count}; }
};

// Writes the text, and up to kTextBlock characters after it. Returns the place after the text.
inline char* putBlocks(char* at, BlockText text) {
    std::memcpy(at, text.begin, kTextBlock);
    for (size_t done = kTextBlock; done < text.length; done += kTextBlock) {
        std::memcpy(at + done, text.begin + done, kTextBlock);
    }
    return at + text.length;
}

}  // namespace sonaprobe
