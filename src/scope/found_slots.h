// A file that may be damaged, as commands read it: what is in it, in its order.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "analysis/slot_finder.h"
#include "scope/byte_source.h"
#include "scope/progress.h"

namespace sonaprobe::scope {

class FoundSlots {
  public:
    // As ByteSource. Throws a Failure where the file cannot be opened.
    explicit FoundSlots(const std::string& path, uint64_t mostGrowth = ByteSource::kMostGrowth)
        : source_(path, {}, mostGrowth) {}

    // visit(found) for each thing in the file. Throws a Failure where the file cannot be read.
    template <class Visit>
    void forEach(const Visit& visit) {
        while (feed()) visitFound(visit);
        finder_.end();
        visitFound(visit);
    }

    // After the last: what the file is instead of a trace; empty where it is one.
    std::string otherKind() const;

    uint64_t bytes() const { return bytes_; }  // unpacked
    const ByteSource& source() const { return source_; }

  private:
    template <class Visit>
    void visitFound(const Visit& visit) {
        while (const auto found = finder_.next()) visit(*found);
    }

    bool feed();

    ByteSource source_;
    SlotFinder finder_;
    Progress progress_;
    std::vector<std::byte> block_;
    std::vector<std::byte> head_;
    uint64_t bytes_ = 0;
};

}  // namespace sonaprobe::scope
