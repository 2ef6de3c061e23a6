// Handing lines over to standard output.

#include "lines/output_line.h"

#include <cstdio>

#include "probe/output.h"

namespace sonaprobe {

constinit OutputLine outputLine;

void OutputLine::handOver() {
    const size_t length = used();
    at_ = buffer_;
    if (fwrite_unlocked(buffer_, 1, length, stdout) < length) outputFailed(stdout);
}

// Hands over what the line holds and all blanks but those that now fit; returns their count.
uint64_t OutputLine::spill(uint64_t count) {
    handOver();
    std::memset(buffer_, ' ', kFillRoom);
    for (; count > kFillRoom; count -= kFillRoom) {
        at_ = buffer_ + kFillRoom;
        handOver();
    }
    return count;
}

}  // namespace sonaprobe
