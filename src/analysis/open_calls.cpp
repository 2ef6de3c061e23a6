// The index of deep calls.

#include "analysis/open_calls.h"

namespace sonaprobe {

void OpenCalls::pushDeep(uint32_t number) {
    Frame& frame = frames_[number];
    const auto [same, isFirst] = innermostDeep_.try_emplace(keyOf(frame.call), number);
    frame.sameBefore = isFirst ? kNone : same->second;
    same.value() = number;
}

void OpenCalls::popDeep(const Frame& frame) {
    if (frame.sameBefore == kNone) {
        innermostDeep_.erase(keyOf(frame.call));
    } else {
        innermostDeep_.find(keyOf(frame.call)).value() = frame.sameBefore;
    }
}

}  // namespace sonaprobe
