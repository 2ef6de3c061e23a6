// The whole span in a thousand buckets: what there is before anything else is unpacked.

#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "analysis/trace_clock.h"
#include "scope/json.h"

namespace sonaprobe::scope::timeline {

class Overview {
  public:
    static constexpr size_t kBuckets = 1024;

    Overview(Nanoseconds begin, Nanoseconds end);

    void addRecord(Nanoseconds time, bool failure, bool merged);
    void addBusy(Nanoseconds begin, Nanoseconds end);

    // The bucket of most merged records: from when to when.
    std::pair<Nanoseconds, Nanoseconds> mostMerged() const;

    // "busy" is the share of the time of so many processors, in thousandths.
    Json toJson(size_t processors) const;

  private:
    size_t bucketOf(Nanoseconds time) {
        // As a rule in the bucket of the one before, which takes no division.
        const bool isNear =
            static_cast<uint64_t>(time - latestBegin_) < static_cast<uint64_t>(width_);
        return isNear ? latest_ : otherBucketOf(time);
    }
    size_t otherBucketOf(Nanoseconds time);
    Nanoseconds beginOf(size_t bucket) const {
        return begin_ + static_cast<Nanoseconds>(bucket) * width_;
    }

    Nanoseconds begin_;
    Nanoseconds width_;
    size_t latest_ = 0;  // bucket
    Nanoseconds latestBegin_;
    std::vector<uint64_t> records_ = std::vector<uint64_t>(kBuckets);
    std::vector<uint64_t> failures_ = std::vector<uint64_t>(kBuckets);
    std::vector<uint64_t> merged_ = std::vector<uint64_t>(kBuckets);
    std::vector<double> busy_ = std::vector<double>(kBuckets);  // at the ends of what is busy
    std::vector<int64_t> whole_ = std::vector<int64_t>(kBuckets + 1);  // buckets that begin or end
};

}  // namespace sonaprobe::scope::timeline
