// Feeds the finder of slots from a file.

#include "scope/found_slots.h"

#include <algorithm>

#include "scope/file_kind.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kBlock = 256 << 10;
constexpr size_t kHead = 4096;  // bytes that tell a file's kind

}  // namespace

bool FoundSlots::feed() {
    const std::span<std::byte> room = finder_.room(kBlock);
    const auto got = room.first(source_.read(room));
    finder_.took(got.size());
    const auto first = got.first(std::min(got.size(), kHead - head_.size()));
    head_.insert(head_.end(), first.begin(), first.end());
    bytes_ += got.size();
    if (got.empty()) {
        Progress::clear();
    } else {
        progress_.show(source_.file().bytesRead(), source_.file().size());
    }
    return !got.empty();
}

std::string FoundSlots::otherKind() const {
    if (finder_.isTrace()) return {};
    return kindOfFile(bytes_ > 0 ? head_ : source_.file().head());
}

}  // namespace sonaprobe::scope
