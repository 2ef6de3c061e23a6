// Indentation that outgrows a line's buffer.

#include "lines/output_line.h"

namespace sonaprobe {

// Hands over what the line holds and all blanks but those that now fit; returns their count.
size_t OutputLine::spill(uint64_t count) {
    handOver();
    std::memset(buffer_, ' ', kFillRoom);
    for (; count > kFillRoom; count -= kFillRoom) {
        at_ = buffer_ + kFillRoom;
        handOver();
    }
    return static_cast<size_t>(count);
}

}  // namespace sonaprobe
