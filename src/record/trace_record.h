// The trace record of the kernel's facility, which is also the slot of a raw trace file.

#pragma once

#include <cstddef>
#include <cstdint>

namespace sonaprobe {

// One trace point as the kernel hands it out: host byte order, no gaps, the same on 32-bit hosts.
struct alignas(8) TraceRecord {
    uint64_t timestamp;  // trace clock ticks
    uint64_t arg1;       // audio events: address of the emitting object
    uint64_t arg2;
    uint64_t arg3;
    uint64_t arg4;
    uint64_t arg5;     // audio events: thread id
    uint32_t debugid;  // event code; the function qualifier in bits 0-1
    uint32_t cpuid;
    uint64_t reserved;  // 0 in raw files
};
static_assert(sizeof(TraceRecord) == 64);
static_assert(offsetof(TraceRecord, arg1) == 8);
static_assert(offsetof(TraceRecord, arg5) == 40);
static_assert(offsetof(TraceRecord, debugid) == 48);
static_assert(offsetof(TraceRecord, cpuid) == 52);
static_assert(offsetof(TraceRecord, reserved) == 56);

// Debug ids that mark a slot as something other than an event.
constexpr uint32_t kDivisorMarker = 0xFEEDFACE;
constexpr uint32_t kInvalidMarker = 0xDEADBEEF;

// Bits 0-1 of a debug id.
enum class Qualifier : uint32_t { none = 0, start = 1, end = 2, both = 3 };

constexpr Qualifier qualifierOf(uint32_t debugid) { return static_cast<Qualifier>(debugid & 3); }
constexpr uint32_t codeOf(uint32_t debugid) { return debugid & ~3U; }
constexpr uint32_t classWordOf(uint32_t debugid) { return debugid >> 16; }
constexpr uint32_t classIdOf(uint32_t debugid) { return (debugid >> 10) & 0x3F; }
constexpr uint32_t eventNumberOf(uint32_t debugid) { return (debugid >> 2) & 0xFF; }

// A debug id without qualifier and event number: what all records of a class have in common.
constexpr uint32_t classKeyOf(uint32_t debugid) { return debugid & ~0x3FFU; }

constexpr uint32_t kAudioClassWord = 0x0524;
constexpr uint32_t kAudioServerKey = 0x21040000;
constexpr uint32_t kHistoricClass = 0;

// The class key of an audio class, whose id is 0 to 63.
constexpr uint32_t audioClassKey(uint32_t classId) { return kAudioClassWord << 16 | classId << 10; }

}  // namespace sonaprobe
