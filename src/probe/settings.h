// The one program-wide settings record: filled by the option parser, read everywhere.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "lines/line_options.h"

namespace sonaprobe {

constexpr const char* kVersion = "100.45";
constexpr const char* kDefaultDecodePath = "/usr/share/misc/trace.codes";

// Room for a path with its terminator.
constexpr size_t kPathRoom = 256;

// Flags are 0 or 1.
struct Settings {
    const char* programName = nullptr;
    LineOptions line;
    uint32_t showTimers = 0;        // kept for its option; nothing reads it
    uint32_t showReadReg = 0;       // kept for its option; nothing reads it
    uint32_t bufferSize = 5000000;  // records
    uint32_t interestType = 0x40000;
    uint32_t interestValue1 = 0;
    uint32_t interestValue2 = 0xFFFFFFFF;
    uint32_t enableAudioTracing = 1;
    uint32_t noLog = 0;
    uint32_t dumpOnce = 0;
    uint32_t writeRaw = 0;
    uint32_t readRaw = 0;
    char rawPath[kPathRoom] = {};
    char decodePath[kPathRoom] = {};
    std::FILE* decodeFile = nullptr;

    // Set while running, not by options.
    double tickDivisor = 1000.0;  // trace clock ticks a microsecond
};

extern Settings settings;

}  // namespace sonaprobe
