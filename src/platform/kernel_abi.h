// The numbers and records of the kernel's side of the platform calls: words of the sysctl name,
// operation codes, and what the operations exchange. Host byte order, no gaps.

#pragma once

#include <cstdint>

namespace sonaprobe::platform {

// First two words of every trace facility name (CTL_KERN and KERN_KDEBUG of <sys/sysctl.h>).
constexpr int kCtlKern = 1;
constexpr int kKernKdebug = 24;

// Third word: the operation (<sys/sysctl.h>).
constexpr int kKernKdEnable = 3;
constexpr int kKernKdSetBuf = 4;
constexpr int kKernKdGetBuf = 5;
constexpr int kKernKdSetup = 6;
constexpr int kKernKdRemove = 7;
constexpr int kKernKdSetReg = 8;
constexpr int kKernKdReadTr = 10;

// What KERN_KDGETBUF answers.
struct KernelBufferInfo {
    int32_t entries;  // records that the kernel buffer holds
    int32_t nolog;    // 1 when the kernel is not logging
    uint32_t flags;
    int32_t threads;
    int32_t bufid;
};
static_assert(sizeof(KernelBufferInfo) == 20);

constexpr uint32_t kBufferWrapped = 0x8;  // in flags: wrapped since the last read

// What KERN_KDSETREG takes. The meaning of the values depends on the type.
struct TraceInterest {
    uint32_t type;
    uint32_t value1;
    uint32_t value2;
    uint32_t value3;
    uint32_t value4;
};
static_assert(sizeof(TraceInterest) == 20);

constexpr uint32_t kInterestSubclass = 0x20000;  // value1 class byte, value2 subclass byte
constexpr uint32_t kInterestRange = 0x40000;     // debug ids from value1 to value2
constexpr uint32_t kInterestValues = 0x200000;   // debug ids equal to one of four values

// What "debug.Audio" takes as new value and answers to a get.
struct AudioDebugFlagsRequest {
    uint32_t magic;      // kAudioDebugMagic
    uint32_t operation;  // kAudioFlagsGet or kAudioFlagsSet
    uint32_t value;      // get: 0, in the reply the current flags; set: the new flags
};
static_assert(sizeof(AudioDebugFlagsRequest) == 12);

constexpr uint32_t kAudioDebugMagic = 0x41554444;
constexpr uint32_t kAudioFlagsGet = 0;
constexpr uint32_t kAudioFlagsSet = 1;
constexpr uint32_t kAudioTracingOn = 0x1;  // in the flags: the drivers post trace records

}  // namespace sonaprobe::platform
