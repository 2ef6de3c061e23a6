// JSON lines: one object a row, whose fields and types are the same in all.

#include "scope/export/table_format.h"
#include "scope/export/values_json.h"

namespace sonaprobe::scope {

namespace {

class JsonRow {
  public:
    void begin(char* at) {
        at_ = at;
        *at_++ = '{';
    }
    char* end() {
        at_[-1] = '}';  // in the place of the last comma
        *at_++ = '\n';
        return at_;
    }

    void integer(std::string_view name, int64_t value) {
        key(name);
        at_ = putSigned(at_, value);
        *at_++ = ',';
    }
    void optional(std::string_view name, std::optional<int64_t> value) {
        if (value) return integer(name, *value);
        literal(name, "null");
    }
    void flag(std::string_view name, bool value) { literal(name, value ? "true" : "false"); }
    void text(std::string_view name, std::string_view value) {
        key(name);
        at_ = putJsonText(at_, value);
        *at_++ = ',';
    }
    void text(std::string_view name, const Event& event, EventWords& words, uint64_t ticks) {
        key(name);
        at_ = putJsonText(at_, event, words, ticks);
        *at_++ = ',';
    }
    void word(std::string_view name, uint64_t value) {
        key(name);
        at_ = putJsonWord(at_, value);
        *at_++ = ',';
    }
    void code(std::string_view name, uint32_t value) {
        key(name);
        *at_++ = '"';
        at_ = putText(putCode(at_, value), "\",");
    }
    void values(std::string_view name, const Event& event, EventWords& words, uint64_t ticks) {
        key(name);
        at_ = putJsonValues(at_, event, words, ticks);
        *at_++ = ',';
    }

  private:
    void key(std::string_view name) {
        *at_++ = '"';
        at_ = putText(putText(at_, name), "\":");
    }
    void literal(std::string_view name, std::string_view value) {
        key(name);
        at_ = putText(at_, value);
        *at_++ = ',';
    }

    char* at_ = nullptr;
};

}  // namespace

std::unique_ptr<Format> makeJson(const FormatOptions& options, TextOutput& out) {
    return std::make_unique<TableFormat<JsonRow>>(options, out);
}

}  // namespace sonaprobe::scope
