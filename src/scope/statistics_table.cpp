// The columns of statistics, as data, and how they are laid out.

#include "scope/statistics_table.h"

#include <algorithm>
#include <array>
#include <cinttypes>

#include "analysis/event_names.h"
#include "scope/event_text.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

using Number = std::optional<int64_t>;

int64_t count(uint64_t value) { return static_cast<int64_t>(value); }

// What only finished calls have.
template <class Value>
Number ofFinished(const CallGroup& group, Value value) {
    return group.finished() == 0 ? Number() : Number(static_cast<int64_t>(value()));
}

template <unsigned kPercent>
Number percentile(CallGroup& group) {
    return ofFinished(group, [&] { return group.durations.percentile(kPercent); });
}

// In the order in which tables have them; those that are shown from the largest width are the first
// to go where names need the room.
constexpr std::array kColumns{
    StatisticsColumn{"self", "self", Measure::duration, 0,
                     [](CallGroup& g) { return ofFinished(g, [&] { return g.self; }); }, true},
    StatisticsColumn{"total", "total", Measure::duration, 0,
                     [](CallGroup& g) { return ofFinished(g, [&] { return g.total; }); }, true},
    StatisticsColumn{"outermost", "outermost", Measure::duration, 120,
                     [](CallGroup& g) { return ofFinished(g, [&] { return g.outermost; }); }, true},
    StatisticsColumn{"busy", "busy", Measure::duration, 130,
                     [](CallGroup& g) -> Number { return g.busy; }, true},
    StatisticsColumn{"calls", "calls", Measure::count, 0,
                     [](CallGroup& g) -> Number { return count(g.calls); }, true},
    StatisticsColumn{"mean", "mean", Measure::duration, 110,
                     [](CallGroup& g) { return ofFinished(g, [&] { return g.mean(); }); }, false},
    StatisticsColumn{"p50", "p50", Measure::duration, 84, percentile<50>, false},
    StatisticsColumn{"p90", "p90", Measure::duration, 104, percentile<90>, false},
    StatisticsColumn{"p99", "p99", Measure::duration, 92, percentile<99>, false},
    StatisticsColumn{"max", "max", Measure::duration, 80,
                     [](CallGroup& g) { return ofFinished(g, [&] { return g.durations.max(); }); },
                     false},
    StatisticsColumn{"failures", "failed", Measure::failures, 79,
                     [](CallGroup& g) -> Number { return count(g.failures); }, true},
    StatisticsColumn{"cut-off", "cut off", Measure::count, 112,
                     [](CallGroup& g) -> Number { return count(g.cutOff); }, true},
    StatisticsColumn{"unfinished", "unfinished", Measure::count, 114,
                     [](CallGroup& g) -> Number { return count(g.unfinished); }, true},
    StatisticsColumn{"points", "points", Measure::count, 100,
                     [](CallGroup& g) -> Number { return count(g.points); }, true},
    StatisticsColumn{"orphan-ends", "orphan ends", Measure::count, 116,
                     [](CallGroup& g) -> Number { return count(g.orphanEnds); }, true},
    StatisticsColumn{"cut-off-self", "cut off self", Measure::duration, 150,
                     [](CallGroup& g) -> Number { return g.cutOffSelf; }, true},
    StatisticsColumn{"unfinished-self", "unfinished self", Measure::duration, 150,
                     [](CallGroup& g) -> Number { return g.unfinishedSelf; }, true},
};

std::string threadText(uint64_t id) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%08" PRIx64, id);
    return text;
}

std::string objectText(const GroupKey& key) {
    return key.hasObject ? wordText(key.object) : "no object";
}

Cell eventCell(uint32_t code) { return {eventText(code), {Tone::driver, hueOf(code)}}; }

std::vector<Cell> namesOf(const GroupKey& key, GroupBy by, const TraceClock& clock) {
    switch (by) {
        case GroupBy::event: return {eventCell(key.code)};
        case GroupBy::driver:
            return {Cell(std::string(driverOf(key.code)), {Tone::driver, hueOf(key.code)})};
        case GroupBy::thread: return {threadText(clock.threadId(key.thread))};
        case GroupBy::cpu: return {std::to_string(key.cpu)};
        case GroupBy::object: return {objectText(key)};
        case GroupBy::threadAndEvent:
            return {threadText(clock.threadId(key.thread)), eventCell(key.code)};
    }
    return {};
}

std::vector<Column> nameColumnsOf(GroupBy by) {
    const Column thread{"thread", Align::left};
    switch (by) {
        case GroupBy::event: return {{"event", Align::left, 0, true}};
        case GroupBy::driver: return {{"driver", Align::left}};
        case GroupBy::thread: return {thread};
        case GroupBy::cpu: return {{"processor", Align::left}};
        case GroupBy::object: return {{"object", Align::left}};
        case GroupBy::threadAndEvent: return {thread, {"event", Align::left, 0, true}};
    }
    return {};
}

Cell cellOf(Measure measure, Number number) {
    if (!number) return "-";
    if (measure == Measure::duration) return durationText(*number);
    const std::string text = countText(static_cast<uint64_t>(*number));
    return measure == Measure::failures && *number > 0 ? Cell(text, {Tone::failure}) : Cell(text);
}

Json namesInJson(const GroupKey& key, GroupBy by, const TraceClock& clock) {
    Json names;
    const bool byThread = by == GroupBy::thread || by == GroupBy::threadAndEvent;
    if (byThread) names["thread"] = wordText(clock.threadId(key.thread));
    if (by == GroupBy::event || by == GroupBy::threadAndEvent) addEvent(names, key.code);
    if (by == GroupBy::driver) names["driver"] = driverOf(key.code);
    if (by == GroupBy::cpu) names["cpu"] = key.cpu;
    if (by == GroupBy::object) {
        names["object"] = key.hasObject ? Json(wordText(key.object)) : Json(nullptr);
    }
    return names;
}

std::string jsonNameOf(const StatisticsColumn& column) {
    std::string name = column.name;
    std::ranges::replace(name, '-', '_');
    return column.measure == Measure::duration ? name + "_ns" : name;
}

}  // namespace

std::span<const StatisticsColumn> statisticsColumns() { return kColumns; }

StatisticsTable::StatisticsTable(CallStatistics& statistics, GroupBy by, const TraceClock& clock)
    : by_(by), clock_(&clock) {
    for (CallGroup& group : statistics.groups()) {
        StatisticsRow& row = rows_.emplace_back();
        row.key = group.key;
        row.finished = group.finished();
        for (const StatisticsColumn& column : kColumns) {
            row.numbers.push_back(column.numberOf(group));
        }
    }
}

void StatisticsTable::sortBy(size_t column) {
    std::ranges::stable_sort(rows_, [column](const auto& one, const auto& other) {
        return one.numbers[column] > other.numbers[column];
    });
}

// Columns that say nothing are left out on a terminal.
bool StatisticsTable::tells(size_t column) const {
    return std::ranges::any_of(rows_,
                               [column](const auto& row) { return row.numbers[column] > 0; });
}

void StatisticsTable::print(Output& out, size_t top) const {
    std::vector<size_t> shown;
    std::vector<Column> columns;
    for (size_t i = 0; i < kColumns.size(); ++i) {
        if (out.terminal() && !tells(i)) continue;
        shown.push_back(i);
        columns.push_back({kColumns[i].head, Align::right, kColumns[i].shownFrom});
    }
    const std::vector<Column> nameColumns = nameColumnsOf(by_);
    columns.insert(columns.end(), nameColumns.begin(), nameColumns.end());

    Table table(columns);
    const size_t printed = top == 0 ? rows_.size() : std::min(top, rows_.size());
    for (const StatisticsRow& row : std::span(rows_).first(printed)) {
        std::vector<Cell> cells;
        for (const size_t i : shown) cells.push_back(cellOf(kColumns[i].measure, row.numbers[i]));
        for (Cell& name : namesOf(row.key, by_, *clock_)) cells.push_back(std::move(name));
        table.add(std::move(cells));
    }
    if (printed < rows_.size()) table.add(tailCells(shown, printed, nameColumns.size()));
    table.print(out);
}

// All rows after the first `printed` in one.
std::vector<Cell> StatisticsTable::tailCells(const std::vector<size_t>& shown, size_t printed,
                                             size_t nameCells) const {
    const std::span<const StatisticsRow> tail = std::span(rows_).subspan(printed);
    constexpr Style kDim{Tone::dim};
    std::vector<Cell> cells;
    for (const size_t i : shown) {
        int64_t sum = 0;
        for (const StatisticsRow& row : tail)
            sum = saturated(Wide{sum} + row.numbers[i].value_or(0));
        Cell cell = kColumns[i].sums ? cellOf(kColumns[i].measure, sum) : "";
        cell.style = kDim;
        cells.push_back(std::move(cell));
    }
    cells.resize(shown.size() + nameCells - 1, "");
    cells.emplace_back(countText(tail.size()) + " more: --top 0", kDim);
    return cells;
}

Json StatisticsTable::toJson(size_t top) const {
    Json list = Json::array();
    const size_t listed = top == 0 ? rows_.size() : std::min(top, rows_.size());
    for (const StatisticsRow& row : std::span(rows_).first(listed)) {
        Json& entry = list.emplace_back(namesInJson(row.key, by_, *clock_));
        entry["finished"] = row.finished;
        for (size_t i = 0; i < kColumns.size(); ++i) {
            entry[jsonNameOf(kColumns[i])] = row.numbers[i] ? Json(*row.numbers[i]) : Json(nullptr);
        }
    }
    return list;
}

}  // namespace sonaprobe::scope
