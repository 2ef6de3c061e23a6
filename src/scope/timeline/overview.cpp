// Counts into buckets.

#include "scope/timeline/overview.h"

#include <algorithm>
#include <cmath>

namespace sonaprobe::scope::timeline {

Overview::Overview(Nanoseconds begin, Nanoseconds end)
    : begin_(begin),
      width_(saturated((Wide{end} - begin) / Wide{kBuckets}) + 1),
      latestBegin_(begin) {}

size_t Overview::otherBucketOf(Nanoseconds time) {
    // Times of a page are bounded, so that nothing overflows.
    latest_ =
        static_cast<size_t>(std::clamp<Nanoseconds>((time - begin_) / width_, 0, kBuckets - 1));
    latestBegin_ = beginOf(latest_);
    return latest_;
}

void Overview::addRecord(Nanoseconds time, bool failure, bool merged) {
    const size_t bucket = bucketOf(time);
    ++records_[bucket];
    if (merged) ++merged_[bucket];
    if (failure) ++failures_[bucket];
}

void Overview::addBusy(Nanoseconds begin, Nanoseconds end) {
    const size_t first = bucketOf(begin);
    const size_t last = bucketOf(end);
    if (first == last) {
        busy_[first] += static_cast<double>(end - begin);
        return;
    }
    busy_[first] += static_cast<double>(beginOf(first + 1) - begin);
    busy_[last] += static_cast<double>(end - beginOf(last));
    ++whole_[first + 1];
    --whole_[last];
}

std::pair<Nanoseconds, Nanoseconds> Overview::mostMerged() const {
    const auto most = static_cast<size_t>(std::ranges::max_element(merged_) - merged_.begin());
    return {beginOf(most), beginOf(most + 1)};
}

Json Overview::toJson(size_t processors) const {
    Json busy = Json::array();
    const double room =
        static_cast<double>(width_) * static_cast<double>(std::max<size_t>(processors, 1));
    int64_t whole = 0;
    for (size_t i = 0; i < kBuckets; ++i) {
        whole += whole_[i];
        const double time = busy_[i] + static_cast<double>(whole) * static_cast<double>(width_);
        busy.push_back(static_cast<int>(std::lround(1000 * std::clamp(time / room, 0.0, 1.0))));
    }
    return {{"busy", busy}, {"failures", failures_}, {"records", records_}};
}

}  // namespace sonaprobe::scope::timeline
