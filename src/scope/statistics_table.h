// Statistics of calls as a table: which columns there are, sorting, and the sum of the tail.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/call_statistics.h"
#include "lines/code_names.h"
#include "scope/json.h"
#include "scope/table.h"

namespace sonaprobe::scope {

// What a column's numbers are.
enum class Measure : uint8_t { count, duration, share, failures };

// A group with its numbers; those of finished calls are missing where there is none.
struct StatisticsRow {
    GroupKey key;
    uint64_t finished = 0;
    std::vector<std::optional<int64_t>> numbers;  // by column
};

struct StatisticsColumn {
    const char* name;  // for --sort, and with "_ns" after durations in JSON
    const char* head;
    Measure measure;
    unsigned shownFrom;                                          // terminal columns
    std::optional<int64_t> (*numberOf)(const CallGroup& group);  // of a share, the part
    bool sums;  // a sum over groups means something
};

std::span<const StatisticsColumn> statisticsColumns();

// "cut_off", "self_ns": the column's name for programs.
std::string fieldNameOf(const StatisticsColumn& column);

class StatisticsTable {
  public:
    // Clock and names must outlive this. The clock knows the threads by their numbers.
    StatisticsTable(CallStatistics& statistics, GroupBy by, const TraceClock& clock,
                    const CodeNames& codeNames);

    // The largest first, by the place of a column, which tables then have at any width.
    void sortBy(size_t column);

    // At most `top` rows, 0 for all, and the others summed in one.
    void print(Output& out, size_t top) const;

    // The same rows as items of a list.
    void write(JsonStream& out, size_t top) const;

    std::span<const StatisticsRow> rows() const { return rows_; }

  private:
    std::vector<Cell> namesOf(const GroupKey& key) const;
    Cell eventCell(uint32_t code) const;
    Json namesInJson(const GroupKey& key) const;
    std::vector<Cell> sumsAfter(size_t printed) const;

    Cell cellOf(size_t column, std::optional<int64_t> number) const;
    Json jsonOf(size_t column, std::optional<int64_t> number) const;
    double shareOf(int64_t part) const;

    GroupBy by_;
    const TraceClock* clock_;
    const CodeNames* codeNames_;
    size_t sortColumn_ = 0;
    Wide busy_ = 0;  // the time in which calls were open, summed over the threads
    std::vector<StatisticsRow> rows_;
};

}  // namespace sonaprobe::scope
