// Cuts bytes into slots.

#include "scope/input.h"

#include <cstring>

#include "scope/failure.h"

namespace sonaprobe::scope {

Input::Input(const std::string& path) : source_(path), block_(kBlockSlots) {}

std::span<const TraceRecord> Input::next() {
    const std::span<std::byte> room = std::as_writable_bytes(std::span(block_));
    std::memmove(room.data(), room.data() + given_ * sizeof(TraceRecord), rest_);
    firstSlot_ += given_;
    given_ = 0;
    while (given_ == 0) {
        const size_t got = source_.read(room.subspan(rest_));
        if (got == 0) break;
        rest_ += got;
        given_ = rest_ / sizeof(TraceRecord);
    }
    rest_ -= given_ * sizeof(TraceRecord);
    if (given_ == 0) {
        Progress::clear();
    } else {
        progress_.show(source_.file().bytesRead(), source_.file().size());
    }
    return std::span(block_).first(given_);
}

void warnOfDamage(const Input& input) {
    const char* const damage = input.source().damage();
    if (damage != nullptr) warn(input.source().name() + ": " + damage);
}

void warnOfAssumedDivisor(const Input& input, const TraceClock& clock) {
    if (!clock.assumedDivisor()) return;
    warn(input.source().name() +
         ": no divisor before the first record; 1000 ticks a microsecond are assumed");
}

}  // namespace sonaprobe::scope
