// A line made of parts with styles, cut or wrapped to the terminal's width.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "scope/output.h"

namespace sonaprobe::scope {

class StyledLine {
  public:
    void clear();

    // Adds text without control characters.
    void add(std::string_view text, Style style = {});

    // The same, with blanks before it up to `width` columns.
    void addRight(std::string_view text, size_t width, Style style = {});

    // Adds an event's name. Where the line would be cut inside its method, the driver gives way.
    void addName(const std::string& name, Style style, const Output& out);

    // Whole where the output is no terminal; else cut at its width, or wrapped there, at blanks
    // where it can be, with the lines after the first `indentation` columns in.
    void print(Output& out, bool wrap, size_t indentation) const;

    size_t columns() const { return columns_; }

  private:
    struct Part {
        size_t begin = 0;
        size_t end = 0;
        Style style{};
    };

    // How much of the text from a byte on a line of so many columns holds.
    size_t wrappedLength(size_t begin, size_t columns) const;

    // Prints from a byte of the text on, at most so many columns; where it ended.
    size_t printSome(Output& out, size_t begin, size_t columns) const;

    std::string text_;
    std::vector<Part> parts_;
    size_t columns_ = 0;
};

}  // namespace sonaprobe::scope
