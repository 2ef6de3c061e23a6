// Stores cycles as columns.

#include "scope/timeline/cycles.h"

#include <utility>

#include "scope/timeline/columns.h"

namespace sonaprobe::scope::timeline {

std::string packedCycles(const IoTrace& trace, const Survey& survey, const SlotNumbers& records) {
    std::string heading;
    Columns columns;
    putNumber(heading, trace.threads.size());
    for (const IoThread& io : trace.threads) {
        std::vector<const IoCycle*> shown;
        io.cycles.forEach([&](const IoCycle& cycle) {
            if (survey.shows(cycle.beginSlot)) shown.push_back(&cycle);
        });
        putNumber(heading, io.thread);
        putNumber(heading, shown.size());

        // One column after the other, each number after the cycle before.
        const auto forEach = [&](const auto& numberOf) {
            const IoCycle none;
            columns.putAll(shown.size(), [&, before = &none](size_t i) mutable {
                return numberOf(*shown[i], *std::exchange(before, shown[i]));
            });
        };
        forEach([](const IoCycle& cycle, const IoCycle& before) {
            return zigzag(cycle.begin - before.begin);
        });
        forEach(
            [](const IoCycle& cycle, const IoCycle&) { return zigzag(cycle.end - cycle.begin); });
        // 0 where it is not known.
        forEach([](const IoCycle& cycle, const IoCycle&) {
            return cycle.hasDue ? 1 + zigzag(cycle.due - cycle.begin) : 0;
        });
        forEach([](const IoCycle& cycle, const IoCycle& before) {
            return zigzag(cycle.budget - before.budget);
        });
        forEach([](const IoCycle& cycle, const IoCycle&) {
            return uint64_t{cycle.overloaded ? 1U : 0U};
        });
        columns.putAll(shown.size(), [&, before = uint64_t{0}](size_t i) mutable {
            const uint64_t record = records.placeNear(shown[i]->beginSlot);
            return record - std::exchange(before, record);
        });
    }
    return columns.below(heading);
}

}  // namespace sonaprobe::scope::timeline
