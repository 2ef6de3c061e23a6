// The one program-wide settings record: filled by the option parser, read everywhere.

#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace sonaprobe {

constexpr const char* kVersion = "100.45";
constexpr const char* kDefaultDecodePath = "/usr/share/misc/trace.codes";

// Bits of Settings::timeMode.
constexpr uint32_t kKernelTime = 1;
constexpr uint32_t kLocalTime = 2;

// Bit of Settings::printMask: show codes of all kinds, not audio codes alone.
constexpr uint32_t kPrintAll = 0x80000000;

// Room for a path with its terminator.
constexpr size_t kPathRoom = 256;

// A set of class ids as --filter-out and --filter-all-except give them. Any 32-bit id may go in;
// only those of six bits can ever be asked for, since a record has no others.
class ClassIdSet {
  public:
    void insert(uint32_t id) {
        empty_ = false;
        if (id < ids_.size()) ids_.set(id);
    }
    bool contains(uint32_t id) const { return id < ids_.size() && ids_.test(id); }
    bool empty() const { return empty_; }

  private:
    std::bitset<64> ids_;
    bool empty_ = true;
};

// Flags are 0 or 1.
struct Settings {
    const char* programName = nullptr;
    uint32_t verbose = 0;
    uint32_t printMask = 0x7FFFFFFF;
    uint32_t timeMode = kLocalTime;
    uint32_t showThread = 1;
    uint32_t showGroup = 1;
    uint32_t showMethod = 1;
    uint32_t showPointer = 1;
    uint32_t indent = 1;
    uint32_t showCodes = 0;
    uint32_t showCpu = 0;
    uint32_t basicFormat = 0;
    uint32_t noSeparator = 0;
    uint32_t showTimers = 0;   // kept for its option; nothing reads it
    uint32_t showReadReg = 0;  // kept for its option; nothing reads it
    uint32_t includeHAL = 0;
    uint32_t showHistoric = 0;      // class 0; no option turns it on
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
    ClassIdSet filterOut;
    ClassIdSet filterAllExcept;

    // Set while running, not by options.
    double tickDivisor = 1000.0;  // trace clock ticks a microsecond
    std::FILE* rawFile = nullptr;
    uint32_t savedAudioFlags = 0;
    uint32_t traceEnabled = 0;
    uint32_t removeOnExit = 1;
};

extern Settings settings;

}  // namespace sonaprobe
