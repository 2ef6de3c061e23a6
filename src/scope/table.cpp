// Lays a table out.

#include "scope/table.h"

#include <algorithm>
#include <numeric>

namespace sonaprobe::scope {

namespace {

constexpr size_t kGap = 2;
constexpr size_t kLeastShrunk = 8;
constexpr const char* kDots = "…";

constexpr bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

void put(std::string& line, const Output& out, const Cell& cell, Align align, size_t width,
         bool last) {
    const std::string text = fitted(cell.text, width);
    const std::string blanks(width - columnsOf(text), ' ');
    if (align == Align::right) line += blanks;
    line += out.styled(text, cell.style);
    if (align == Align::left && !last) line += blanks;
    if (!last) line.append(kGap, ' ');
}

}  // namespace

size_t columnsOf(std::string_view text) {
    return static_cast<size_t>(std::ranges::count_if(text, beginsCharacter));
}

std::string_view firstColumns(std::string_view text, size_t columns) {
    size_t at = 0;
    for (; at < text.size(); ++at) {
        if (beginsCharacter(text[at]) && columns-- == 0) break;
    }
    return text.substr(0, at);
}

std::string fitted(const std::string& text, size_t width) {
    if (columnsOf(text) <= width || width == 0) return text;
    const size_t method = text.rfind("::");
    if (method != std::string::npos && leastFit(text) <= width) {
        return std::string(firstColumns(text, width - leastFit(text))) + kDots +
               text.substr(method);
    }
    return std::string(firstColumns(text, width - 1)) + kDots;
}

size_t leastFit(const std::string& text) {
    const size_t method = text.rfind("::");
    if (method == std::string::npos) return std::min(columnsOf(text), kLeastShrunk);
    return std::min(columnsOf(text), 1 + columnsOf(std::string_view(text).substr(method)));
}

bool Table::tells(size_t column) const {
    return !columns_[column].mayBeLeftOut || std::ranges::any_of(rows_, [&](const auto& row) {
        const std::string& text = row[column].text;
        return !text.empty() && text != "0" && text != "0 ns" && text != "-";
    });
}

size_t Table::widthOf(size_t column) const {
    size_t width = columnsOf(columns_[column].head);
    for (const auto& row : rows_) width = std::max(width, columnsOf(row[column].text));
    return width;
}

size_t Table::leastWidthOf(size_t column) const {
    if (!columns_[column].shrinks) return widthOf(column);
    size_t width = columnsOf(columns_[column].head);
    for (const auto& row : rows_) width = std::max(width, leastFit(row[column].text));
    return width;
}

std::vector<size_t> Table::shownColumns(const Output& out) const {
    std::vector<size_t> shown;
    for (size_t i = 0; i < columns_.size(); ++i) {
        if (out.width() == 0 || (columns_[i].shownFrom <= out.width() && tells(i))) {
            shown.push_back(i);
        }
    }
    if (out.width() == 0 || shown.empty()) return shown;

    size_t needed = kGap * (shown.size() - 1);
    for (const size_t column : shown) needed += leastWidthOf(column);
    while (needed > out.width()) {
        const auto last = std::ranges::max_element(
            shown, {}, [this](size_t column) { return columns_[column].shownFrom; });
        if (columns_[*last].shownFrom == 0) break;
        needed -= kGap + leastWidthOf(*last);
        shown.erase(last);
    }
    return shown;
}

std::vector<size_t> Table::widths(const std::vector<size_t>& shown, const Output& out) const {
    std::vector<size_t> widths;
    widths.reserve(shown.size());
    for (const size_t column : shown) widths.push_back(widthOf(column));
    if (out.width() == 0) return widths;
    const size_t total =
        std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1), std::plus<>());
    size_t excess = total > out.width() ? total - out.width() : 0;
    for (size_t i = 0; i < shown.size(); ++i) {
        const size_t given = std::min(excess, widths[i] - leastWidthOf(shown[i]));
        widths[i] -= given;
        excess -= given;
    }
    return widths;
}

void Table::print(Output& out) const {
    const std::vector<size_t> shown = shownColumns(out);
    if (shown.empty()) return;
    const std::vector<size_t> width = widths(shown, out);
    const auto printRow = [&](const auto& cellOf) {
        std::string line;
        for (size_t i = 0; i < shown.size(); ++i) {
            put(line, out, cellOf(shown[i]), columns_[shown[i]].align, width[i],
                i + 1 == shown.size());
        }
        out.line(line);
    };
    printRow([&](size_t column) { return Cell(columns_[column].head, {Tone::head}); });
    for (const auto& row : rows_) {
        printRow([&](size_t column) -> const Cell& { return row[column]; });
    }
}

}  // namespace sonaprobe::scope
