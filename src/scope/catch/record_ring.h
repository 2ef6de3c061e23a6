// The records of the last seconds, in memory that has a limit.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "analysis/trace_clock.h"
#include "record/trace_record.h"

namespace sonaprobe::scope {

// Records come in passes, and go with them: the times here are those of passes, by a clock that
// nobody sets. A trace's own times may jump.
class RecordRing {
  public:
    static constexpr size_t kChunkRecords = 4096;
    using Chunk = std::array<TraceRecord, kChunkRecords>;

    // A stretch of kept records that stays as it is, whatever comes and goes.
    struct Piece {
        std::shared_ptr<const Chunk> chunk;
        size_t begin;
        size_t end;

        std::span<const TraceRecord> records() const {
            return std::span(*chunk).subspan(begin, end - begin);
        }
    };

    // Holds at most so many bytes, but two chunks at least.
    explicit RecordRing(uint64_t mostBytes);

    // Adds records of the pass at this time, which is not before that of the pass before. As in a
    // raw file their reserved words become 0, and those that a file's reader would take for
    // something else are left out.
    void add(std::span<const TraceRecord> records, Nanoseconds time);

    // Records may be lost near here: an invalid slot says so in the file.
    void markLoss(Nanoseconds time);

    // Lets go of the passes before this time.
    void forgetBefore(Nanoseconds time);

    // What is kept, the oldest first.
    std::vector<Piece> pieces() const;

    uint64_t slots() const { return end_ - begin_; }  // marks included
    bool empty() const { return begin_ == end_; }
    size_t bytes() const { return chunks_.size() * sizeof(Chunk); }

    // Of the oldest pass of which something is kept; there is one.
    Nanoseconds oldest() const { return passes_.front().time; }

    // Whether the limit has taken records of this time or later.
    bool hasLostSince(Nanoseconds time) const { return limitTook_ && limitTookUpTo_ >= time; }

  private:
    struct Pass {
        Nanoseconds time;
        uint64_t end;  // number of the slot after its last one
    };

    void put(const TraceRecord& slot);
    void endPass(Nanoseconds time);
    void dropOldestChunk();

    size_t mostChunks_;
    std::deque<std::shared_ptr<Chunk>> chunks_;
    std::deque<Pass> passes_;
    uint64_t firstOfChunks_ = 0;  // number of the first slot of the first chunk
    uint64_t begin_ = 0;          // of the first slot that is kept
    uint64_t end_ = 0;
    bool limitTook_ = false;
    bool limitTookOfPass_ = false;  // of the one that is being added
    Nanoseconds limitTookUpTo_ = 0;
};

}  // namespace sonaprobe::scope
