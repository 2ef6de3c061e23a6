// Cuts bytes into slots.

#include "scope/input.h"

#include <algorithm>
#include <cstring>

#include "analysis/slot_finder.h"
#include "scope/failure.h"
#include "scope/file_kind.h"

namespace sonaprobe::scope {

Input::Input(const TraceOptions& trace, Accept accept)
    : source_(trace.path, trace.copyOf, trace.mostGrowth),
      recognised_(accept == Accept::anything),
      block_(kBlockSlots) {}

// Asks the finder of slots, as info does about a whole file. Zeros that were never written may come
// before a trace.
void Input::recognise(std::span<const std::byte> begin) {
    const auto isZero = [](std::byte byte) { return byte == std::byte{0}; };
    if (given_ > 0 && std::ranges::all_of(begin, isZero)) return;
    SlotFinder finder;
    finder.feed(begin);
    finder.end();
    while (finder.next()) {
    }
    recognised_ = finder.isTrace();
    if (recognised_) return;
    throw Failure{source_.name() +
                  ": no trace: " + kindOfFile(begin.empty() ? source_.file().head() : begin)};
}

// After the head comes the stretch.
void Input::goOnInPart() {
    if (!part_ || firstSlot_ != part_->head || part_->begin == part_->head) return;
    source_.skipTo(part_->begin * sizeof(TraceRecord));
    firstSlot_ = part_->begin;
    rest_ = 0;
}

// How many may be read before something is left out.
uint64_t Input::slotsLeft() const {
    if (!part_) return kBlockSlots;
    const uint64_t end = firstSlot_ < part_->head ? part_->head : part_->end;
    return std::min<uint64_t>(kBlockSlots, end - firstSlot_);
}

std::span<const TraceRecord> Input::next() {
    const std::span<std::byte> block = std::as_writable_bytes(std::span(block_));
    std::memmove(block.data(), block.data() + given_ * sizeof(TraceRecord), rest_);
    firstSlot_ += given_;
    given_ = 0;
    goOnInPart();
    const std::span<std::byte> room = block.first(slotsLeft() * sizeof(TraceRecord));
    if (room.empty()) return {};
    while (given_ == 0) {
        const size_t got = source_.read(room.subspan(rest_));
        if (got == 0) break;
        rest_ += got;
        given_ = rest_ / sizeof(TraceRecord);
    }
    // At the end of a file of zeros, these still stand in the block.
    if (!recognised_) recognise(room.first(firstSlot_ > 0 && given_ == 0 ? kBlockSlots : rest_));
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
