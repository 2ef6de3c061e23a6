// Counts by debug id against counts of each record.

#include "analysis/event_tally.h"

#include <gtest/gtest.h>
#include <random>

#include "analysis/class_names.h"
#include "analysis/event_traits.h"

namespace sonaprobe {
namespace {

// Known and unknown events of many classes, more than are remembered at once.
std::vector<TraceRecord> randomRecords() {
    std::mt19937 random(5);
    const auto below = [&](uint32_t end) { return static_cast<uint32_t>(random() % end); };
    std::vector<TraceRecord> records(100'000);
    for (TraceRecord& record : records) {
        const uint32_t word = below(64) == 0 ? 0x0100 + below(4) : kAudioClassWord;
        const uint32_t classId = below(4) == 0 ? below(64) : 10 + below(3);
        record.debugid = word << 16 | classId << 10 | below(128) << 2 | below(4);
        record.arg2 = below(3);
        record.arg3 = below(3);
    }
    return records;
}

TEST(EventTally, CountsWhatEachRecordSays) {
    const std::vector<TraceRecord> records = randomRecords();
    EventTally tally;
    std::map<uint32_t, uint64_t> classes;
    std::map<Outcome, uint64_t> outcomes;
    uint64_t points = 0;
    for (const TraceRecord& record : records) {
        tally.add(record);
        ++classes[classOf(record.debugid)];
        ++outcomes[decode(record).outcome];
        const Qualifier qualifier = qualifierOf(record.debugid);
        const bool isStart = qualifier == Qualifier::start;
        if (isStart ? startsArePoints(codeOf(record.debugid)) : qualifier != Qualifier::end) {
            ++points;
        }
    }
    const EventCounts counts = tally.counts();
    EXPECT_EQ(counts.recordsOfClass, classes);
    EXPECT_EQ(counts.outcomes.printed, outcomes[Outcome::text]);
    EXPECT_EQ(counts.outcomes.verboseOnly, outcomes[Outcome::gated]);
    EXPECT_EQ(counts.outcomes.silent, outcomes[Outcome::silent]);
    EXPECT_EQ(counts.outcomes.unclassified, outcomes[Outcome::unknown]);
    EXPECT_EQ(counts.points, points);
    for (const auto& [outcome, count] : outcomes) EXPECT_GT(count, 0U);
    EXPECT_EQ(outcomes.size(), 4U);
}

}  // namespace
}  // namespace sonaprobe
