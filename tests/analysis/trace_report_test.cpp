// What a report says of a trace is the same whether its records come one by one or many at once.

#include "analysis/trace_report.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>

#include "random_trace.h"

namespace sonaprobe::test {
namespace {

constexpr size_t kRounds = 200;

// Parts of traces, one after the other: the clock goes back between most of them and in some of
// them, and the divisor may change.
std::vector<TraceRecord> makeTrace(Random& random) {
    std::vector<TraceRecord> all;
    for (size_t parts = 1 + random.below(6); parts > 0; --parts) {
        const Codes codes = random.oneIn(8) ? Codes::any : Codes::drivers;
        std::vector<TraceRecord> part =
            soundTrace(random, codes, random.below(400), random.oneIn(3));
        if (random.oneIn(2)) part[0].timestamp = 1 + random.below(3000);
        // It begins near the end of the part before, or far from it.
        if (!all.empty() && random.oneIn(2)) {
            const uint64_t shift = all.back().timestamp - part.back().timestamp / 2;
            for (size_t n = 1; n < part.size(); ++n) part[n].timestamp += shift;
        }
        const size_t without = random.oneIn(2) ? 1 : 0;  // the divisor
        all.insert(all.end(), part.begin() + static_cast<ptrdiff_t>(without), part.end());
    }
    return all;
}

std::unique_ptr<TraceReport> reportOf(const std::vector<TraceRecord>& trace, bool withCalls,
                                      bool byRun) {
    auto report = std::make_unique<TraceReport>(withCalls);
    SlotFinder finder;
    finder.feed(bytesOf(trace));
    finder.end();
    for (;;) {
        const RecordRun run = byRun ? finder.plainRecords() : RecordRun{};
        if (!run.records.empty()) {
            report->take(run);
            continue;
        }
        const auto found = finder.next();
        if (!found) break;
        report->take(*found);
    }
    report->finish();
    return report;
}

void expectSame(const TraceReport& one, const TraceReport& other) {
    EXPECT_EQ(one.slots().slots(), other.slots().slots());
    EXPECT_EQ(one.slots().records(), other.slots().records());
    EXPECT_EQ(one.span(), other.span());
    EXPECT_EQ(one.begin(), other.begin());
    EXPECT_EQ(one.clock().threads(), other.clock().threads());
    EXPECT_EQ(one.clock().stepsBack(), other.clock().stepsBack());
    EXPECT_EQ(one.clock().disordered(), other.clock().disordered());
    EXPECT_EQ(one.divisors(), other.divisors());
    EXPECT_EQ(one.recordsOfProcessor(), other.recordsOfProcessor());
    EXPECT_EQ(one.events().recordsOfClass, other.events().recordsOfClass);
    EXPECT_EQ(one.events().points, other.events().points);
    EXPECT_EQ(one.events().outcomes.printed, other.events().outcomes.printed);
    ASSERT_EQ(one.calls() == nullptr, other.calls() == nullptr);
    if (one.calls() != nullptr) {
        EXPECT_EQ(one.calls()->opened, other.calls()->opened);
        EXPECT_EQ(one.calls()->finished, other.calls()->finished);
        EXPECT_EQ(one.calls()->cutOff, other.calls()->cutOff);
    }
    const std::vector<Finding> findings = one.findings().all();
    const std::vector<Finding> otherFindings = other.findings().all();
    ASSERT_EQ(findings.size(), otherFindings.size());
    for (size_t n = 0; n < findings.size(); ++n) {
        EXPECT_EQ(findings[n].kind, otherFindings[n].kind);
        EXPECT_EQ(findings[n].slot, otherFindings[n].slot);
        EXPECT_EQ(findings[n].lastSlot, otherFindings[n].lastSlot);
        EXPECT_EQ(findings[n].back, otherFindings[n].back);
    }
}

TEST(TraceReport, SaysOfRunsWhatItSaysOfEachRecord) {
    Random random(7);
    uint64_t stepsBack = 0;
    uint64_t disordered = 0;
    for (size_t round = 0; round < kRounds; ++round) {
        SCOPED_TRACE(round);
        const std::vector<TraceRecord> trace = makeTrace(random);
        for (const bool withCalls : {true, false}) {
            const auto bySlot = reportOf(trace, withCalls, false);
            expectSame(*bySlot, *reportOf(trace, withCalls, true));
            stepsBack += bySlot->clock().stepsBack();
            disordered += bySlot->clock().disordered();
        }
        if (HasFailure()) break;
    }
    EXPECT_GT(stepsBack, kRounds);
    EXPECT_GT(disordered, kRounds);
}

TEST(TraceReport, IsGivenRunsInWhichTheClockGoesOn) {
    Random random(8);
    size_t inOrder = 0;
    size_t others = 0;
    for (size_t round = 0; round < kRounds; ++round) {
        SlotFinder finder;
        finder.feed(bytesOf(makeTrace(random)));
        finder.end();
        for (;;) {
            const RecordRun run = finder.plainRecords();
            if (run.records.empty() && !finder.next()) break;
            (run.inOrder ? inOrder : others) += run.records.size();
            for (size_t n = 1; n < run.records.size(); ++n) {
                const uint64_t before = run.records[n - 1].timestamp;
                EXPECT_TRUE(isNear(before, run.records[n].timestamp));
                EXPECT_TRUE(!run.inOrder || run.records[n].timestamp >= before);
            }
        }
    }
    EXPECT_GT(inOrder, 10 * kRounds);
    EXPECT_GT(others, 10 * kRounds);
}

}  // namespace
}  // namespace sonaprobe::test
