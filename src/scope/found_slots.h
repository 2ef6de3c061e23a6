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
        whileFed([&] { return visitNext(visit); });
    }

    // visit(run) for many records at once wherever they follow each other without any doubt,
    // visit(found) for each other thing.
    template <class Visit>
    void forEachRun(const Visit& visit) {
        whileFed([&] {
            const RecordRun run = finder_.plainRecords();
            if (run.records.empty()) return visitNext(visit);
            visit(run);
            return true;
        });
    }

    // After the last: what the file is instead of a trace; empty where it is one.
    std::string otherKind() const;

    uint64_t bytes() const { return bytes_; }  // unpacked
    const ByteSource& source() const { return source_; }

  private:
    // Whether there was one.
    template <class Visit>
    bool visitNext(const Visit& visit) {
        const auto found = finder_.next();
        if (found) visit(*found);
        return found.has_value();
    }

    template <class GoOn>
    void whileFed(const GoOn& goOn) {
        while (feed()) {
            while (goOn()) {
            }
        }
        finder_.end();
        while (goOn()) {
        }
    }

    bool feed();

    ByteSource source_;
    SlotFinder finder_;
    Progress progress_;
    std::vector<std::byte> head_;
    uint64_t bytes_ = 0;
};

}  // namespace sonaprobe::scope
