// CSV as RFC 4180 has it: a head, fields that are quoted where they need it, lines that end with
// CR LF.

#include <bit>

#include "scope/export/table_format.h"
#include "scope/export/values_json.h"

namespace sonaprobe::scope {

namespace {

// Spreadsheets would run a text that begins so, and a name may come from anybody's file.
bool looksLikeFormula(std::string_view text) {
    constexpr std::string_view kBeginnings = "=+-@";
    return !text.empty() && kBeginnings.find(text.front()) != std::string_view::npos;
}

char* putQuoted(char* at, std::string_view text) {
    *at++ = '"';
    if (looksLikeFormula(text)) *at++ = '\'';
    const char* from = text.data();
    const char* const end = from + text.size();
    while (end - from >= 8) {
        EightBytes bytes;
        std::memcpy(&bytes, from, sizeof bytes);
        std::memcpy(at, &bytes, sizeof bytes);
        const EightBytes quotes = areEqual(bytes, '"');
        const int copied = quotes == 0 ? 8 : std::countr_zero(quotes) / 8 + 1;
        from += copied;
        at += copied;
        if (quotes != 0) *at++ = '"';
    }
    for (; from != end; ++from) {
        if (*from == '"') *at++ = '"';
        *at++ = *from;
    }
    *at++ = '"';
    return at;
}

char* putField(char* at, std::string_view text) {
    if (text.empty()) return at;  // there may be no address to copy from
    const bool special = containsAny(
        text, [](EightBytes bytes) { return areEqual(bytes, ',') | areEqual(bytes, '"'); });
    return special || looksLikeFormula(text) ? putQuoted(at, text) : putText(at, text);
}

class CsvRow {
  public:
    void begin(char* at) { at_ = at; }
    char* end() { return putText(at_ - 1, "\r\n"); }  // in the place of the last comma

    void integer(std::string_view, int64_t value) {
        at_ = putSigned(at_, value);
        *at_++ = ',';
    }
    void optional(std::string_view, std::optional<int64_t> value) {
        if (value) at_ = putSigned(at_, *value);
        *at_++ = ',';
    }
    void flag(std::string_view, bool value) { at_ = putText(at_, value ? "true," : "false,"); }
    void text(std::string_view, std::string_view value) {
        at_ = putField(at_, value);
        *at_++ = ',';
    }
    // Without its leading 0: programs take 0x00000000000000a5 for a number, and many keep 53 bits.
    void word(std::string_view, uint64_t value) {
        *at_++ = 'x';
        at_ = putHexDigits(at_, value, 16);
        *at_++ = ',';
    }
    void code(std::string_view, uint32_t value) {
        // The same for the code: its 0 is overwritten.
        char* const zero = at_ - 1;  // the comma before it takes its place
        at_ = putCode(zero, value);
        *zero = ',';
        *at_++ = ',';
    }
    void values(std::string_view, const Event& event, EventWords& words, uint64_t ticks) {
        const char* const end = putJsonValues(json_.data(), event, words, ticks);
        at_ = putQuoted(at_, {json_.data(), static_cast<size_t>(end - json_.data())});
        *at_++ = ',';
    }

  private:
    char* at_ = nullptr;
    std::array<char, TextOutput::kRoom / 2> json_{};
};

// The names of the fields.
class CsvHead {
  public:
    void begin(char* at) { at_ = at; }
    char* end() { return putText(at_ - 1, "\r\n"); }

    void integer(std::string_view name, int64_t) { put(name); }
    void optional(std::string_view name, std::optional<int64_t>) { put(name); }
    void flag(std::string_view name, bool) { put(name); }
    void text(std::string_view name, std::string_view) { put(name); }
    void word(std::string_view name, uint64_t) { put(name); }
    void code(std::string_view name, uint32_t) { put(name); }
    void values(std::string_view name, const Event&, EventWords&, uint64_t) { put(name); }

  private:
    void put(std::string_view name) {
        at_ = putText(at_, name);
        *at_++ = ',';
    }

    char* at_ = nullptr;
};

}  // namespace

std::unique_ptr<Format> makeCsv(const FormatOptions& options, TextOutput& out) {
    auto format = std::make_unique<TableFormat<CsvRow>>(options, out);
    format->putHead<CsvHead>();
    return format;
}

}  // namespace sonaprobe::scope
