// Random sound traces.

#include "random_trace.h"

#include <algorithm>
#include <span>

#include "analysis/plausibility.h"

namespace sonaprobe::test {

namespace {

constexpr uint64_t kTicksPerMicrosecond = 24;
constexpr size_t kThreads = 6;

uint32_t debugidOf(Random& random, Codes codes) {
    const auto low = static_cast<uint32_t>(random.bits());
    switch (codes) {
        case Codes::drivers:
            if (random.oneIn(4)) return 0x21040000 | (low % 5) << 2 | (low >> 8) % 3;
            return 0x05240000 | (low & 0xFFFF);
        case Codes::oneOtherClassWord: return 0x01400000 | (low & 0xFFFF);
        case Codes::any: break;
    }
    return std::max(low, 0x10000U);
}

uint64_t wordOf(Random& random) {
    switch (random.below(5)) {
        case 0: return 0;
        case 1: return random.below(1000);
        case 2: return 0xffffff80'22d14000 + random.below(0x100000) * 16;
        case 3: return random.below(1000) << 32 | random.below(1000);
        default: return random.bits();
    }
}

}  // namespace

std::vector<TraceRecord> soundTrace(Random& random, Codes codes, size_t records, bool disorder) {
    std::vector<TraceRecord> slots(1);
    slots[0].timestamp = kTicksPerMicrosecond;
    slots[0].debugid = kDivisorMarker;
    uint64_t now = random.oneIn(4) ? 0 : random.below(uint64_t{1} << 48);
    uint64_t latest[kThreads] = {};
    for (size_t n = 0; n < records; ++n) {
        now += 1 + random.below(5'000);
        TraceRecord slot{};
        const size_t thread = random.below(kThreads);
        slot.timestamp = now;
        if (disorder && random.oneIn(10)) slot.timestamp -= std::min(now, random.below(60'000));
        slot.timestamp = latest[thread] = std::max(slot.timestamp, latest[thread]);
        slot.debugid = debugidOf(random, codes);
        slot.cpuid = static_cast<uint32_t>(thread);
        slot.arg1 = wordOf(random);
        slot.arg2 = wordOf(random);
        slot.arg3 = wordOf(random);
        slot.arg4 = wordOf(random);
        slot.arg5 = 0x1c00 + thread;
        slots.push_back(slot);
    }
    return slots;
}

Bytes bytesOf(const std::vector<TraceRecord>& slots) {
    const auto bytes = std::as_bytes(std::span(slots));
    return {bytes.begin(), bytes.end()};
}

Bytes randomBytes(Random& random, size_t count) {
    Bytes bytes(count);
    for (std::byte& byte : bytes) byte = static_cast<std::byte>(random.below(256));
    return bytes;
}

std::vector<TraceRecord> swapped(std::vector<TraceRecord> slots) {
    for (TraceRecord& slot : slots) {
        slot = slotAt(std::as_bytes(std::span(&slot, 1)).data(), ByteOrder::swapped);
    }
    return slots;
}

}  // namespace sonaprobe::test
