// Slots are numbered from the first one ever; chunks come and go whole.

#include "scope/catch/record_ring.h"

#include <algorithm>

namespace sonaprobe::scope {

RecordRing::RecordRing(uint64_t mostBytes)
    : mostChunks_(std::max<uint64_t>(2, mostBytes / sizeof(Chunk))) {}

void RecordRing::dropOldestChunk() {
    chunks_.pop_front();
    firstOfChunks_ += kChunkRecords;
    if (begin_ >= firstOfChunks_) return;
    begin_ = firstOfChunks_;
    limitTook_ = true;
    bool ofWholePasses = false;
    while (!passes_.empty() && passes_.front().end <= begin_) {
        ofWholePasses = passes_.front().end == begin_;
        limitTookUpTo_ = passes_.front().time;
        passes_.pop_front();
    }
    if (ofWholePasses) return;
    limitTookOfPass_ = passes_.empty();
    if (!passes_.empty()) limitTookUpTo_ = passes_.front().time;
}

void RecordRing::put(const TraceRecord& slot) {
    const uint64_t place = (end_ - firstOfChunks_) % kChunkRecords;
    if (place == 0) {
        if (chunks_.size() == mostChunks_) dropOldestChunk();
        chunks_.push_back(std::make_shared_for_overwrite<Chunk>());
    }
    TraceRecord& kept = (*chunks_.back())[place];
    kept = slot;
    kept.reserved = 0;
    ++end_;
}

void RecordRing::endPass(Nanoseconds time) {
    if (limitTookOfPass_) limitTookUpTo_ = time;
    limitTookOfPass_ = false;
    if (!passes_.empty() && passes_.back().time == time) {
        passes_.back().end = end_;
    } else if (end_ > begin_ && (passes_.empty() || passes_.back().end < end_)) {
        passes_.push_back({time, end_});
    }
}

void RecordRing::add(std::span<const TraceRecord> records, Nanoseconds time) {
    for (const TraceRecord& record : records) {
        if (record.debugid == kInvalidMarker || record.debugid == kDivisorMarker) continue;
        put(record);
    }
    endPass(time);
}

void RecordRing::markLoss(Nanoseconds time) {
    TraceRecord mark{};
    mark.debugid = kInvalidMarker;
    put(mark);
    endPass(time);
}

void RecordRing::forgetBefore(Nanoseconds time) {
    while (!passes_.empty() && passes_.front().time < time) {
        begin_ = passes_.front().end;
        passes_.pop_front();
    }
    while (!chunks_.empty() && begin_ >= firstOfChunks_ + kChunkRecords) {
        chunks_.pop_front();
        firstOfChunks_ += kChunkRecords;
    }
}

std::vector<RecordRing::Piece> RecordRing::pieces() const {
    std::vector<Piece> pieces;
    uint64_t first = firstOfChunks_;
    for (const std::shared_ptr<Chunk>& chunk : chunks_) {
        const uint64_t begin = std::max(begin_, first);
        const uint64_t end = std::min(end_, first + kChunkRecords);
        if (begin < end) pieces.push_back({chunk, begin - first, end - first});
        first += kChunkRecords;
    }
    return pieces;
}

}  // namespace sonaprobe::scope
