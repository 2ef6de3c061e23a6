// How lines look, and which records have one.

#pragma once

#include <bitset>
#include <cstdint>

namespace sonaprobe {

// Bits of LineOptions::timeMode.
constexpr uint32_t kKernelTime = 1;
constexpr uint32_t kLocalTime = 2;

// Bit of LineOptions::printMask: show codes of all kinds, not audio codes alone.
constexpr uint32_t kPrintAll = 0x80000000;

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
struct LineOptions {
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
    uint32_t verbose = 0;
    uint32_t includeHAL = 0;
    uint32_t showHistoric = 0;  // class 0; no option of sonaprobe turns it on
    ClassIdSet filterOut{};
    ClassIdSet filterAllExcept{};
};

}  // namespace sonaprobe
