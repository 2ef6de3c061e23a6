// Searches a scene for gaps.

#include "analysis/record_gaps.h"

#include <algorithm>
#include <set>

namespace sonaprobe {

namespace {

// How long after a stretch an end without a start tells of a gap in it.
constexpr Nanoseconds kOrphansAfter = 20'000'000;

}  // namespace

std::optional<Gap> largestGap(const Scene& scene, Nanoseconds begin, Nanoseconds end) {
    const std::vector<SeenRecord>& records = scene.records;
    std::optional<Gap> best;
    Nanoseconds second = 0;
    std::set<uint32_t> threads;  // an end without start follows in them soon
    uint64_t firstSlot = UINT64_MAX;
    for (size_t i = records.size(); i-- > 1;) {
        const SeenRecord& record = records[i];
        if (record.orphan && codeOf(record.debugid) != kIoThread &&
            record.time < end + kOrphansAfter) {
            threads.insert(record.thread);
        }
        firstSlot = std::min(firstSlot, record.slot);
        const SeenRecord& last = records[i - 1];
        if (record.time <= begin || last.time >= end) continue;
        Gap gap{.begin = last.time,
                .end = record.time,
                .slotBefore = last.slot,
                .slotAfter = firstSlot,
                .explains = threads.size()};
        if (!best ||
            std::pair(gap.explains, gap.length()) > std::pair(best->explains, best->length())) {
            if (best) second = std::max(second, best->length());
            best = gap;
        } else {
            second = std::max(second, gap.length());
        }
    }
    if (best) best->standsOut = best->length() > 2 * second;
    return best;
}

std::optional<Gap> markedGap(const Scene& scene, Nanoseconds begin, Nanoseconds end) {
    std::optional<Gap> best;
    for (size_t i = 1; i < scene.records.size(); ++i) {
        const SeenRecord& before = scene.records[i - 1];
        const SeenRecord& after = scene.records[i];
        if (!after.afterInvalid || after.time <= begin || before.time >= end) continue;
        const Gap gap{.begin = before.time,
                      .end = after.time,
                      .slotBefore = before.slot,
                      .slotAfter = after.slot};
        if (!best || gap.length() > best->length()) best = gap;
    }
    return best;
}

}  // namespace sonaprobe
