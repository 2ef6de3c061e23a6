// One record under any name as a row of JSON and of CSV: each is whole, and they say the same.
//
// An input is a name, a byte of ticks, a time, then a record.

#include <memory>
#include <string>

#include "fuzz.h"
#include "grammar.h"
#include "named_trace.h"
#include "scope/export/format.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

namespace {

// A format and what it has written.
class Writer {
  public:
    Writer(std::unique_ptr<Format> (*make)(const FormatOptions&, TextOutput&),
           const CodeNames& names)
        : format_(make({.file = "trace", .names = &names}, out_)) {
        out_.handOver();
        head_ = text_;
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // What comes once, then the record's row.
    const std::string& textOf(const ToldRecord& told) {
        text_ = head_;
        format_->record(told);
        out_.handOver();
        return text_;
    }

  private:
    std::string text_;
    std::string head_;
    TextOutput out_{
        {.write = [](void* all, const char* some,
                     size_t length) { static_cast<std::string*>(all)->append(some, length); },
         .context = &text_}};
    std::unique_ptr<Format> format_;
};

// Whether a field of CSV says what the same one of JSON does.
bool same(const std::string& field, const std::string& name, const Json& value) {
    if (value.is_object()) return Json::parse(field) == value;
    if (!value.is_string()) return field == value.dump();
    const auto& text = value.get_ref<const std::string&>();
    const bool isWord = name == "code" || name == "thread" || name == "object";
    // Spreadsheets must take none for a number or a formula.
    if (isWord && !text.empty()) return "0" + field == text;
    const bool isFormula =
        !text.empty() && std::string_view("=+-@").find(text[0]) != std::string_view::npos;
    return field == (isFormula ? "'" + text : text);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static CodeNames names;
    static Writer jsonWriter(makeJson, names);
    static Writer csvWriter(makeCsv, names);
    fuzz::Input input(data, size);
    fuzz::takeName(input, names);
    const auto ticks = input.number<uint8_t>();
    const auto time = input.number<int64_t>();
    const auto record = input.number<TraceRecord>();
    const ToldRecord told{.record = &record,
                          .event = decode(record),
                          .slot = record.timestamp,
                          .time = time,
                          .ticksPerMicrosecond = ticks};

    const std::string& json = jsonWriter.textOf(told);
    const std::string& csv = csvWriter.textOf(told);
    fuzz::checkPrintable(json, "json");
    fuzz::checkPrintable(csv, "csv");
    const Json object = Json::parse(json);
    const std::vector<fuzz::Row> rows = fuzz::rowsOf(csv);
    require(rows.size() == 2 && rows[0].size() == rows[1].size() && rows[0].size() == object.size(),
            "a head, and a row with its fields");
    size_t field = 0;
    for (const auto& [key, value] : object.items()) {
        require(rows[0][field] == key, "both have the same fields");
        require(same(rows[1][field], key, value), "both say the same");
        ++field;
    }
    return 0;
}
