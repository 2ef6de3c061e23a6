// Stores cycles as columns.

#include "scope/timeline/cycles.h"

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
            const IoCycle* before = &none;
            for (const IoCycle* const cycle : shown) {
                columns.put(numberOf(*cycle, *before));
                before = cycle;
            }
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
        uint64_t before = 0;
        for (const IoCycle* const cycle : shown) {
            const uint64_t record = records.placeNear(cycle->beginSlot);
            columns.put(record - before);
            before = record;
        }
    }
    return columns.below(heading);
}

}  // namespace sonaprobe::scope::timeline
