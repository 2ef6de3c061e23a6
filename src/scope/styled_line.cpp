// Prints parts with their styles.

#include "scope/styled_line.h"

#include <algorithm>

#include "scope/table.h"

namespace sonaprobe::scope {

void StyledLine::clear() {
    text_.clear();
    parts_.clear();
    columns_ = 0;
}

void StyledLine::add(std::string_view text, Style style) {
    parts_.push_back({text_.size(), text_.size() + text.size(), style});
    text_ += text;
    columns_ += columnsOf(text);
}

void StyledLine::addRight(std::string_view text, size_t width, Style style) {
    const size_t taken = columnsOf(text);
    if (taken < width) add(std::string(width - taken, ' '));
    add(text, style);
}

void StyledLine::addName(const std::string& name, Style style, const Output& out) {
    // The last column is that of the dots.
    const size_t room = out.width() > columns_ ? out.width() - columns_ - 1 : 0;
    add(room >= leastFit(name) ? fitted(name, room) : name, style);
}

size_t StyledLine::wrappedLength(size_t begin, size_t columns) const {
    const std::string_view rest = std::string_view(text_).substr(begin);
    const std::string_view most = firstColumns(rest, columns);
    if (most.size() == rest.size()) return most.size();
    const size_t blank = rest.substr(0, most.size() + 1).rfind(' ');
    // A line of little more than blanks is none.
    const bool breaks = blank != std::string_view::npos && 2 * blank > most.size();
    return breaks ? blank : most.size();
}

size_t StyledLine::printSome(Output& out, size_t begin, size_t columns) const {
    size_t at = begin;
    for (const Part& part : parts_) {
        if (part.end <= at) continue;
        const std::string_view rest = std::string_view(text_).substr(at, part.end - at);
        const std::string_view shown = firstColumns(rest, columns);
        out.write(out.styled(shown, part.style));
        at += shown.size();
        columns -= columnsOf(shown);
        if (shown.size() < rest.size()) break;
    }
    return at;
}

void StyledLine::print(Output& out, bool wrap, size_t indentation) const {
    if (out.width() == 0 || columns_ <= out.width()) {
        printSome(out, 0, columns_);
        out.write("\n");
        return;
    }
    if (!wrap) {
        printSome(out, 0, out.width() - 1);
        out.line("…");
        return;
    }
    // A narrow terminal has no room for the indentation.
    const size_t in = indentation + 20 < out.width() ? indentation : 0;
    for (size_t at = 0; at < text_.size();) {
        const size_t before = at == 0 ? 0 : in;
        const size_t length = wrappedLength(at, out.width() - before);
        out.write(std::string(before, ' '));
        at = printSome(out, at, columnsOf(std::string_view(text_).substr(at, length)));
        out.write("\n");
        while (at < text_.size() && text_[at] == ' ') ++at;
    }
}

}  // namespace sonaprobe::scope
