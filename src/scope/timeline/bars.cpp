// Merges bars and stores them as columns.

#include "scope/timeline/bars.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "scope/timeline/columns.h"

namespace sonaprobe::scope::timeline {

namespace {

constexpr Nanoseconds kStep = 4;
// Begins and ends of merged levels are kept to this part of a cell, which no screen shows.
constexpr Nanoseconds kParts = 16;

// Which rows have bars, and how many.
template <class CountOf>
void putRows(std::string& bytes, const Rows& rows, const std::vector<uint32_t>& order,
             const CountOf& countOf) {
    putNumber(bytes, order.size());
    uint32_t thread = 0;
    for (const uint32_t row : order) {
        const RowKey& key = rows.keys()[row];
        putNumber(bytes, key.thread - thread);
        putNumber(bytes, uint64_t{key.depth} << 1 | (key.points ? 1 : 0));
        putNumber(bytes, countOf(row));
        thread = key.thread;
    }
}

// One column after the other, each through all rows. `barsOf(row)` is a range, `barOf(element)` its
// Bar.
template <class BarsOf, class BarOf>
void putBars(Columns& columns, const std::vector<uint32_t>& order, Nanoseconds quantum,
             const BarsOf& barsOf, const BarOf& barOf) {
    const auto forEach = [&](const auto& put) {
        for (const uint32_t row : order) {
            Bar before;
            for (const auto& element : barsOf(row)) {
                const Bar& bar = barOf(element);
                put(bar, before);
                before = bar;
            }
        }
    };
    forEach([&](const Bar& bar, const Bar& before) {
        columns.put(zigzag(bar.begin / quantum - before.begin / quantum));
    });
    forEach([&](const Bar& bar, const Bar&) {
        columns.put(static_cast<uint64_t>((bar.end - bar.begin) / quantum));
    });
    forEach([&](const Bar& bar, const Bar&) { columns.put(bar.event); });
    forEach([&](const Bar& bar, const Bar&) { columns.put(bar.flags); });
    forEach([&](const Bar& bar, const Bar& before) {
        columns.put(zigzag(static_cast<int64_t>(bar.record - before.record)));
    });
}

}  // namespace

uint32_t Rows::newNumber(const RowKey& key) {
    if (key.thread >= threads_.size()) threads_.resize(key.thread + 1);
    Thread& thread = threads_[key.thread];
    std::vector<uint32_t>& numbers = key.points ? thread.points : thread.calls;
    if (key.depth >= numbers.size()) numbers.resize(key.depth + 1);
    keys_.push_back(key);
    numbers[key.depth] = static_cast<uint32_t>(keys_.size());
    return numbers[key.depth] - 1;
}

std::vector<uint32_t> Rows::inOrder() const {
    std::vector<uint32_t> order(keys_.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, {}, [&](uint32_t row) { return keys_[row]; });
    return order;
}

Pyramid::Pyramid(Nanoseconds finest, Nanoseconds coarsest) {
    for (Nanoseconds resolution = std::max(finest, kParts);; resolution *= kStep) {
        levels_.push_back({resolution, {}});
        if (resolution > coarsest / kStep) break;
    }
}

void Pyramid::add(size_t level, uint32_t row, const Bar& bar) {
    Level& at = levels_[level];
    if (row >= at.rows.size()) at.rows.resize(row + 1);
    Row& in = at.rows[row];
    const Nanoseconds length = bar.end - bar.begin;
    const Nanoseconds longest = (bar.flags & kMerged) != 0 ? bar.longest : length;
    if (in.isPending) {
        Bar& pending = in.pending;
        if (length < at.resolution && bar.begin >= in.cellBegin && bar.begin < in.cellEnd) {
            if (longest > pending.longest) {
                pending.longest = longest;
                pending.record = bar.record;
                pending.event = bar.event;
            }
            pending.end = std::max(pending.end, bar.end);
            pending.flags |= bar.flags | kMerged;
            return;
        }
        in.isPending = false;
        put(level, row, Bar(pending));
    }
    if (length < at.resolution) {
        in.pending = bar;
        in.pending.longest = longest;
        in.isPending = true;
        // Divided once for each cell, not for each bar. The two cells around 0 are one.
        const Nanoseconds cell = bar.begin / at.resolution;
        in.cellBegin = cell > 0 ? cell * at.resolution : (cell - 1) * at.resolution + 1;
        in.cellEnd = cell < 0 ? cell * at.resolution + 1 : (cell + 1) * at.resolution;
        return;
    }
    put(level, row, bar);
}

void Pyramid::put(size_t level, uint32_t row, const Bar& bar) {
    levels_[level].rows[row].bars.push_back(bar);
    if (level + 1 < levels_.size()) add(level + 1, row, bar);
}

void Pyramid::finish() {
    for (size_t level = 0; level < levels_.size(); ++level) {
        for (uint32_t row = 0; row < levels_[level].rows.size(); ++row) {
            Row& in = levels_[level].rows[row];
            if (std::exchange(in.isPending, false)) put(level, row, Bar(in.pending));
        }
    }
}

std::string Pyramid::packed(size_t level, const Rows& rows) const {
    const Level& at = levels_[level];
    std::vector<uint32_t> order = rows.inOrder();
    std::erase_if(order, [&](uint32_t row) { return row >= at.rows.size(); });
    const auto barsOf = [&](uint32_t row) -> const auto& { return bars(level, row); };
    const Nanoseconds quantum = at.resolution / kParts;
    std::string bytes;
    putNumber(bytes, static_cast<uint64_t>(quantum));
    putRows(bytes, rows, order, [&](uint32_t row) { return barsOf(row).size(); });
    Columns columns;
    putBars(columns, order, quantum, barsOf, [](const Bar& bar) -> const Bar& { return bar; });
    columns.appendTo(bytes);
    return bytes;
}

void LongBars::add(uint32_t row, const LongBar& bar) {
    if (row >= rows_.size()) rows_.resize(row + 1);
    rows_[row].push_back(bar);
}

std::string LongBars::packed(const Rows& rows) const {
    std::vector<uint32_t> order = rows.inOrder();
    std::erase_if(order, [&](uint32_t row) { return row >= rows_.size() || rows_[row].empty(); });
    std::string bytes;
    putNumber(bytes, 1);
    putRows(bytes, rows, order, [&](uint32_t row) { return rows_[row].size(); });
    Columns columns;
    putBars(
        columns, order, 1, [&](uint32_t row) -> const auto& { return rows_[row]; },
        [](const LongBar& bar) -> const Bar& { return bar.bar; });
    for (const uint32_t row : order) {
        for (const LongBar& bar : rows_[row]) columns.put(bar.endRecord - bar.bar.record);
    }
    for (const uint32_t row : order) {
        for (const LongBar& bar : rows_[row]) columns.put(zigzag(bar.self));
    }
    columns.appendTo(bytes);
    return bytes;
}

}  // namespace sonaprobe::scope::timeline
