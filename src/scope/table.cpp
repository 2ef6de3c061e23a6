// Lays a table out.

#include "scope/table.h"

#include <algorithm>
#include <numeric>

namespace sonaprobe::scope {

namespace {

constexpr size_t kGap = 2;
constexpr size_t kLeastShrunk = 8;
constexpr std::string_view kDots = "…";

constexpr bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// The first `count` characters.
std::string firstColumns(const std::string& text, size_t count) {
    size_t at = 0;
    for (; at < text.size(); ++at) {
        if (beginsCharacter(text[at]) && count-- == 0) break;
    }
    return text.substr(0, at);
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

std::string fitted(const std::string& text, size_t width) {
    if (columnsOf(text) <= width || width == 0) return text;
    const size_t method = text.rfind("::");
    if (method != std::string::npos && columnsOf(text) - method + 1 <= width) {
        return firstColumns(text, width - (text.size() - method) - 1) + std::string(kDots) +
               text.substr(method);
    }
    return firstColumns(text, width - 1) + std::string(kDots);
}

std::vector<size_t> Table::shownColumns(const Output& out) const {
    std::vector<size_t> shown;
    for (size_t i = 0; i < columns_.size(); ++i) {
        if (out.width() == 0 || columns_[i].shownFrom <= out.width()) shown.push_back(i);
    }
    return shown;
}

std::vector<size_t> Table::widths(const std::vector<size_t>& shown, const Output& out) const {
    std::vector<size_t> widths;
    for (const size_t column : shown) {
        size_t width = columnsOf(columns_[column].head);
        for (const auto& row : rows_) width = std::max(width, columnsOf(row[column].text));
        widths.push_back(width);
    }
    if (out.width() == 0) return widths;
    const size_t total =
        std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1), std::plus<>());
    size_t excess = total > out.width() ? total - out.width() : 0;
    for (size_t i = 0; i < shown.size(); ++i) {
        if (!columns_[shown[i]].shrinks || widths[i] <= kLeastShrunk) continue;
        const size_t given = std::min(excess, widths[i] - kLeastShrunk);
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
