// The grammar of rows that exports write: CSV and lines of JSON.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz.h"
#include "scope/json.h"

namespace sonaprobe::fuzz {

using Row = std::vector<std::string>;

// The rows of a table as RFC 4180 has them.
inline std::vector<Row> rowsOf(std::string_view text) {
    std::vector<Row> rows;
    while (!text.empty()) {
        Row& row = rows.emplace_back();
        for (bool more = true; more;) {
            std::string& field = row.emplace_back();
            if (text.starts_with('"')) {
                text.remove_prefix(1);
                for (;;) {
                    const size_t quote = text.find('"');
                    require(quote != std::string_view::npos, "a quoted field ends");
                    field += text.substr(0, quote);
                    text.remove_prefix(quote + 1);
                    if (!text.starts_with('"')) break;
                    field += '"';
                    text.remove_prefix(1);
                }
            } else {
                const size_t end = text.find_first_of(",\r");
                require(end != std::string_view::npos, "a field ends");
                field = text.substr(0, end);
                require(field.find('"') == std::string::npos, "a quote is quoted");
                text.remove_prefix(end);
            }
            more = text.starts_with(',');
            if (more) text.remove_prefix(1);
        }
        require(text.starts_with("\r\n"), "a row ends with CR LF");
        text.remove_prefix(2);
    }
    return rows;
}

inline void checkCsv(const std::string& text) {
    const std::vector<Row> rows = rowsOf(text);
    require(!rows.empty(), "there is a head");
    for (const Row& row : rows) {
        require(row.size() == rows[0].size(), "each row has the fields of the head");
        for (const std::string& field : row) {
            require(field.empty() || std::string_view("=+@").find(field[0]) == std::string::npos,
                    "no field is a formula");
        }
    }
}

template <class Check>
void forEachLine(std::string_view text, const Check& check) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        require(end != std::string_view::npos, "each line ends");
        check(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
}

inline void checkJson(const std::string& text) {
    std::vector<std::string> names;
    forEachLine(text, [&](std::string_view line) {
        const scope::Json row = scope::Json::parse(line);
        std::vector<std::string> found;
        for (const auto& [name, value] : row.items()) found.push_back(name);
        if (names.empty()) names = found;
        require(found == names, "each line has the same fields");
    });
}

// All that may be written: printable ASCII, and what ends a line.
inline void checkPrintable(const std::string& text, std::string_view format) {
    for (const char character : text) {
        require((character >= ' ' && character <= '~') || character == '\n' ||
                    (character == '\r' && format == "csv"),
                "what is written is printable");
    }
}

}  // namespace sonaprobe::fuzz
