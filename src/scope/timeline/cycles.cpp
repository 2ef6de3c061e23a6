// Stores cycles as columns.

#include "scope/timeline/cycles.h"

#include <array>

#include "scope/timeline/columns.h"

namespace sonaprobe::scope::timeline {

namespace {

// What the page has of a cycle, as numbers after the cycle before.
using Row = std::array<uint64_t, 6>;

Row rowOf(const IoCycle& cycle, const IoCycle& before, uint64_t recordsBetween) {
    return {zigzag(cycle.begin - before.begin),
            zigzag(cycle.end - cycle.begin),
            cycle.due ? 1 + zigzag(*cycle.due - cycle.begin) : 0,  // 0 where it is not known
            zigzag(cycle.budget - before.budget),
            cycle.overloaded ? uint64_t{1} : 0,
            recordsBetween};
}

}  // namespace

std::string packedCycles(const IoTrace& trace, const Survey& survey, const SlotNumbers& records) {
    std::string heading;
    Columns columns;
    putNumber(heading, trace.threads.size());
    for (const IoThread& io : trace.threads) {
        std::vector<Row> rows;
        rows.reserve(io.cycles.size());
        const IoCycle none;
        const IoCycle* before = &none;
        uint64_t recordBefore = 0;
        for (const IoCycle& cycle : io.cycles) {
            if (!survey.shows(cycle.beginSlot)) continue;
            const uint64_t record = records.placeNear(cycle.beginSlot);
            rows.push_back(rowOf(cycle, *before, record - recordBefore));
            before = &cycle;
            recordBefore = record;
        }
        putNumber(heading, io.thread);
        putNumber(heading, rows.size());
        for (size_t column = 0; column < Row().size(); ++column) {
            columns.putAll(rows.size(), [&](size_t i) { return rows[i][column]; });
        }
    }
    return columns.below(heading);
}

}  // namespace sonaprobe::scope::timeline
