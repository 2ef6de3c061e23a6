// CSV as RFC 4180 has it: a head, fields that are quoted where they need it, lines that end with
// CR LF.

#include "scope/export/table_format.h"
#include "scope/export/values_json.h"

namespace sonaprobe::scope {

namespace {

// Spreadsheets would run a text that begins so, and a name may come from anybody's file.
constexpr bool looksLikeFormula(char first) {
    return first == '=' || first == '+' || first == '-' || first == '@';
}

char* putQuoted(char* at, std::string_view text) {
    *at++ = '"';
    if (looksLikeFormula(text.front())) *at++ = '\'';
    for (const char character : text) {
        if (character == '"') *at++ = '"';
        *at++ = character;
    }
    *at++ = '"';
    return at;
}

char* putField(char* at, std::string_view text) {
    if (text.empty()) return at;  // there may be no address to copy from
    const bool special = containsAny(
        text, [](EightBytes bytes) { return areEqual(bytes, ',') | areEqual(bytes, '"'); });
    return special || looksLikeFormula(text.front()) ? putQuoted(at, text) : putText(at, text);
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
    void text(std::string_view, const Event& event, EventWords& words, uint64_t ticks) {
        char* const begin = at_;
        if (event.text != nullptr && event.text->holds == 0) {
            char* const end = putLogText(begin, event, static_cast<double>(ticks));
            if (!looksLikeFormula(*begin)) at_ = end;
        }
        if (at_ == begin) at_ = putField(begin, words.textOf(event, ticks));
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
        *at_++ = '"';
        at_ = putText(putJsonValues<Quotes::twice>(at_, event, words, ticks), "\",");
    }

  private:
    char* at_ = nullptr;
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
    void text(std::string_view name, const Event&, EventWords&, uint64_t) { put(name); }
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
