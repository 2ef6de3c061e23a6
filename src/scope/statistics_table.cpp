// The columns of statistics, as data, and how they are laid out.

#include "scope/statistics_table.h"

#include <algorithm>
#include <array>

#include "analysis/class_names.h"
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

// In the order in which tables have them; those that are shown from the largest width are the first
// to go where names need the room.
constexpr std::array kColumns{
    StatisticsColumn{"self", "self", Measure::duration, 0,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.self; }); },
                     true},
    StatisticsColumn{"share", "share", Measure::share, 0,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.self; }); },
                     true},
    StatisticsColumn{
        "total", "total", Measure::duration, 78,
        [](const CallGroup& g) { return ofFinished(g, [&] { return saturated(g.total); }); }, true},
    StatisticsColumn{"outermost", "outermost", Measure::duration, 120,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.outermost; }); },
                     true},
    StatisticsColumn{"busy", "busy", Measure::duration, 130,
                     [](const CallGroup& g) { return g.busy; }, true},
    StatisticsColumn{"calls", "calls", Measure::count, 0,
                     [](const CallGroup& g) -> Number { return count(g.calls); }, true},
    StatisticsColumn{"mean", "mean", Measure::duration, 110,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.mean(); }); },
                     false},
    StatisticsColumn{"p50", "p50", Measure::duration, 80,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.p50; }); },
                     false},
    StatisticsColumn{"p90", "p90", Measure::duration, 104,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.p90; }); },
                     false},
    StatisticsColumn{"p99", "p99", Measure::duration, 92,
                     [](const CallGroup& g) { return ofFinished(g, [&] { return g.p99; }); },
                     false},
    StatisticsColumn{
        "max", "max", Measure::duration, 79,
        [](const CallGroup& g) { return ofFinished(g, [&] { return g.durations.max(); }); }, false},
    StatisticsColumn{"failures", "failed", Measure::failures, 77,
                     [](const CallGroup& g) -> Number { return count(g.failures); }, true},
    StatisticsColumn{"cut-off", "cut off", Measure::count, 112,
                     [](const CallGroup& g) -> Number { return count(g.cutOff); }, true},
    StatisticsColumn{"unfinished", "unfinished", Measure::count, 114,
                     [](const CallGroup& g) -> Number { return count(g.unfinished); }, true},
    StatisticsColumn{"points", "points", Measure::count, 100,
                     [](const CallGroup& g) -> Number { return count(g.points); }, true},
    StatisticsColumn{"orphan-ends", "orphan ends", Measure::count, 116,
                     [](const CallGroup& g) -> Number { return count(g.orphanEnds); }, true},
    StatisticsColumn{"cut-off-self", "cut off self", Measure::duration, 150,
                     [](const CallGroup& g) -> Number { return g.cutOffSelf; }, true},
    StatisticsColumn{"unfinished-self", "unfinished self", Measure::duration, 150,
                     [](const CallGroup& g) -> Number { return g.unfinishedSelf; }, true},
};

std::string objectText(const GroupKey& key) {
    return key.hasObject ? wordText(key.object) : "no object";
}

std::vector<Column> nameColumnsOf(GroupBy by) {
    const Column thread{"thread", Align::left};
    switch (by) {
        case GroupBy::event: return {{"event", Align::left, 0, true}};
        case GroupBy::driver: return {{"driver", Align::left}};
        case GroupBy::recordClass: return {{"class", Align::left}};
        case GroupBy::thread: return {thread};
        case GroupBy::cpu: return {{"processor", Align::left}};
        case GroupBy::object: return {{"object", Align::left}};
        case GroupBy::threadAndEvent: return {thread, {"event", Align::left, 0, true}};
    }
    return {};
}

}  // namespace

std::span<const StatisticsColumn> statisticsColumns() { return kColumns; }

std::string fieldNameOf(const StatisticsColumn& column) {
    std::string name = column.name;
    std::ranges::replace(name, '-', '_');
    return column.measure == Measure::duration ? name + "_ns" : name;
}

StatisticsTable::StatisticsTable(CallStatistics& statistics, GroupBy by, const TraceClock& clock,
                                 const CodeNames& codeNames)
    : by_(by), clock_(&clock), codeNames_(&codeNames) {
    for (CallGroup& group : statistics.groups()) {
        if (group.isEmpty()) continue;
        StatisticsRow& row = rows_.emplace_back();
        row.key = group.key;
        row.finished = group.finished();
        group.tellPercentiles();
        busy_ += Wide{group.self} + group.cutOffSelf + group.unfinishedSelf;
        for (const StatisticsColumn& column : kColumns) {
            row.numbers.push_back(column.numberOf(group));
        }
    }
}

double StatisticsTable::shareOf(int64_t part) const {
    return busy_ == 0 ? 0 : static_cast<double>(part) / static_cast<double>(busy_);
}

Cell StatisticsTable::cellOf(size_t column, Number number) const {
    if (!number) return "-";
    switch (kColumns[column].measure) {
        case Measure::duration: return durationText(*number);
        case Measure::share: return shareText(shareOf(*number));
        case Measure::count:
        case Measure::failures: break;
    }
    const bool failed = kColumns[column].measure == Measure::failures && *number > 0;
    return {countText(static_cast<uint64_t>(*number)), {failed ? Tone::failure : Tone::plain}};
}

Json StatisticsTable::jsonOf(size_t column, Number number) const {
    if (!number) return nullptr;
    return kColumns[column].measure == Measure::share ? Json(shareOf(*number)) : Json(*number);
}

void StatisticsTable::sortBy(size_t column) {
    sortColumn_ = column;
    std::ranges::stable_sort(rows_, [column](const auto& one, const auto& other) {
        return one.numbers[column] > other.numbers[column];
    });
}

void StatisticsTable::print(Output& out, size_t top) const {
    std::vector<Column> columns;
    columns.reserve(kColumns.size());
    for (size_t i = 0; i < kColumns.size(); ++i) {
        const bool sorts = i == sortColumn_;
        columns.push_back(
            {kColumns[i].head, Align::right, sorts ? 0 : kColumns[i].shownFrom, false, !sorts});
    }
    const std::vector<Column> nameColumns = nameColumnsOf(by_);
    columns.insert(columns.end(), nameColumns.begin(), nameColumns.end());

    Table table(columns);
    const size_t printed = top == 0 ? rows_.size() : std::min(top, rows_.size());
    for (const StatisticsRow& row : std::span(rows_).first(printed)) {
        std::vector<Cell> cells;
        for (size_t i = 0; i < kColumns.size(); ++i) {
            cells.push_back(cellOf(i, row.numbers[i]));
        }
        for (Cell& name : namesOf(row.key)) cells.push_back(std::move(name));
        table.add(std::move(cells));
    }
    if (printed < rows_.size()) {
        std::vector<Cell> cells = sumsAfter(printed);
        cells.resize(columns.size() - 1, "");
        cells.emplace_back(countText(rows_.size() - printed) + " more: --top 0", Style{Tone::dim});
        table.add(std::move(cells));
    }
    table.print(out);
}

Cell StatisticsTable::eventCell(uint32_t code) const {
    return {eventText(code, *codeNames_), {Tone::driver, hueOf(code)}};
}

std::vector<Cell> StatisticsTable::namesOf(const GroupKey& key) const {
    const auto threadCell = [&] { return Cell(shortWordText(clock_->threadId(key.thread))); };
    switch (by_) {
        case GroupBy::event: return {eventCell(key.code)};
        case GroupBy::driver:
            return {{std::string(driverOf(key.code)), {Tone::driver, hueOf(key.code)}}};
        case GroupBy::recordClass: return {classNameOf(key.code)};
        case GroupBy::thread: return {threadCell()};
        case GroupBy::cpu: return {std::to_string(key.cpu)};
        case GroupBy::object: return {objectText(key)};
        case GroupBy::threadAndEvent: return {threadCell(), eventCell(key.code)};
    }
    return {};
}

Json StatisticsTable::namesInJson(const GroupKey& key) const {
    Json names;
    const bool hasThread = by_ == GroupBy::thread || by_ == GroupBy::threadAndEvent;
    if (hasThread) names["thread"] = wordText(clock_->threadId(key.thread));
    if (by_ == GroupBy::event || by_ == GroupBy::threadAndEvent) {
        addEvent(names, key.code, *codeNames_);
    }
    if (by_ == GroupBy::driver) names["driver"] = driverOf(key.code);
    if (by_ == GroupBy::recordClass) names["class"] = classNameOf(key.code);
    if (by_ == GroupBy::cpu) names["cpu"] = key.cpu;
    if (by_ == GroupBy::object) {
        names["object"] = key.hasObject ? Json(wordText(key.object)) : Json(nullptr);
    }
    return names;
}

// All rows after the first `printed` in one.
std::vector<Cell> StatisticsTable::sumsAfter(size_t printed) const {
    std::vector<Cell> cells;
    for (size_t i = 0; i < kColumns.size(); ++i) {
        Number sum;
        for (const StatisticsRow& row : std::span(rows_).subspan(printed)) {
            if (row.numbers[i]) sum = saturatedSum(sum.value_or(0), *row.numbers[i]);
        }
        Cell& cell = cells.emplace_back(kColumns[i].sums ? cellOf(i, sum) : "");
        cell.style = {Tone::dim};
    }
    return cells;
}

void StatisticsTable::write(JsonStream& out, size_t top) const {
    const size_t listed = top == 0 ? rows_.size() : std::min(top, rows_.size());
    for (const StatisticsRow& row : std::span(rows_).first(listed)) {
        Json entry = namesInJson(row.key);
        entry["finished"] = row.finished;
        for (size_t i = 0; i < kColumns.size(); ++i) {
            entry[fieldNameOf(kColumns[i])] = jsonOf(i, row.numbers[i]);
        }
        out.item(entry);
    }
}

}  // namespace sonaprobe::scope
