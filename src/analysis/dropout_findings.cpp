// Sums up dropouts and cycles.

#include "analysis/dropout_findings.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>

namespace sonaprobe {

std::vector<DropoutFinding> findingsOf(const std::vector<Dropout>& dropouts) {
    // A culprit without a code is a gap, which is one of its kind.
    const auto keyOf = [](const Dropout& dropout) {
        const auto& [cause, culprit] = std::pair(dropout.verdict.cause, dropout.verdict.culprit);
        const uint64_t place = culprit && !culprit->code ? culprit->slot : 0;
        return std::tuple(cause, culprit ? culprit->code : std::nullopt,
                          culprit && culprit->code ? culprit->thread : dropout.thread, place);
    };
    using Key = decltype(keyOf(dropouts.front()));
    std::map<Key, size_t> findingOf;
    std::vector<DropoutFinding> findings;
    for (size_t i = 0; i < dropouts.size(); ++i) {
        const auto [known, isNew] = findingOf.try_emplace(keyOf(dropouts[i]), findings.size());
        if (isNew) findings.emplace_back();
        DropoutFinding& finding = findings[known->second];
        finding.dropouts.push_back(i);
        const Nanoseconds lacking = dropouts[i].lacking.value_or(0);
        addTo(finding.lacking, lacking);
        finding.mostLacking = std::max(finding.mostLacking, lacking);
    }
    for (DropoutFinding& finding : findings) {
        std::ranges::stable_sort(finding.dropouts, {}, [&](size_t dropout) {
            return dropouts[dropout].verdict.certainty;
        });
    }
    std::ranges::stable_sort(findings, [](const DropoutFinding& a, const DropoutFinding& b) {
        return a.dropouts.size() > b.dropouts.size();
    });
    return findings;
}

std::vector<IoSummary> summariesOf(const std::vector<TimedThread>& threads) {
    std::vector<IoSummary> summaries;
    for (const TimedThread& timed : threads) {
        IoSummary& summary = summaries.emplace_back();
        summary.thread = timed.io->id;
        summary.clockShift = timed.clockShift;
        summary.cycles = timed.io->cycles.size();
        Durations lengths;
        std::vector<Nanoseconds> budgets;
        timed.io->cycles.forEach([&](const IoCycle& cycle) {
            if (cycle.overloaded) ++summary.overloaded;
            if (cycle.isNearMiss()) {
                ++summary.nearMisses;
                const Nanoseconds lateness = cycle.end - cycle.due - cycle.budget;
                if (lateness > summary.worstLateness) {
                    summary.worstLateness = lateness;
                    summary.worstNearMiss = cycle.endSlot;
                }
            }
            if (!cycle.isHealthy()) return;
            const Nanoseconds left = cycle.due + cycle.budget - cycle.end;
            summary.margin = summary.healthy == 0 ? left : std::min(summary.margin, left);
            ++summary.healthy;
            lengths.add(std::max<Nanoseconds>(0, cycle.end - cycle.due));
            budgets.push_back(cycle.budget);
        });
        if (summary.healthy == 0) continue;
        summary.budget = medianOf(std::move(budgets));
        const auto percentiles = lengths.percentiles(std::array{50U, 99U});
        summary.p50 = percentiles[0];
        summary.p99 = percentiles[1];
        summary.longest = lengths.max();
    }
    return summaries;
}

}  // namespace sonaprobe
