// Tables for people: heads, right-aligned numbers, as many columns as the terminal has room for.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scope/output.h"

namespace sonaprobe::scope {

enum class Align : uint8_t { left, right };

struct Column {
    std::string head;  // with the unit, where all cells have the same
    Align align = Align::right;
    // The least terminal width in which the column is shown. Where names still need the room, those
    // that are shown from the largest width give way. Piped output has all columns.
    unsigned shownFrom = 0;
    // Gives way where the terminal is too narrow: names, of which the method is kept whole.
    bool shrinks = false;
    // Left out on a terminal where all its cells are "0", "0 ns", "-" or empty.
    bool mayBeLeftOut = false;
};

struct Cell {
    Cell(std::string content, Style look = {}) : text(std::move(content)), style(look) {}
    Cell(const char* content) : text(content) {}

    std::string text;  // already escaped
    Style style;
};

class Table {
  public:
    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    // As many cells as there are columns.
    void add(std::vector<Cell> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }

    void print(Output& out) const;

  private:
    std::vector<size_t> shownColumns(const Output& out) const;
    std::vector<size_t> widths(const std::vector<size_t>& shown, const Output& out) const;
    bool tells(size_t column) const;
    size_t widthOf(size_t column) const;
    size_t leastWidthOf(size_t column) const;

    std::vector<Column> columns_;
    std::vector<std::vector<Cell>> rows_;
};

// Characters that a text takes on a terminal; it is UTF-8 without control characters.
size_t columnsOf(std::string_view text);

// As much of the text's beginning as takes at most so many columns.
std::string_view firstColumns(std::string_view text, size_t columns);

// The text in at most `width` columns: of "Group::method" the group is cut and the method kept
// whole, any other text is cut at its end.
std::string fitted(const std::string& text, size_t width);

// The least width in which the text is as good as whole: that of its method, for "Group::method".
size_t leastFit(const std::string& text);

}  // namespace sonaprobe::scope
