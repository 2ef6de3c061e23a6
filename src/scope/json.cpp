// Prints JSON.

#include "scope/json.h"

namespace sonaprobe::scope {

namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string textOf(const Json& document, int indent) {
    return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string schemaName(const char* command, int version) {
    return "sonascope/" + std::string(command) + "/" + std::to_string(version);
}

void printJson(Output& out, const Json& document) { out.line(textOf(document, kIndent)); }

JsonStream::JsonStream(Output& out, const Json& head) : out_(&out) {
    for (const auto& [key, value] : head.items()) member(key.c_str(), value);
}

void JsonStream::begin(const char* key) {
    out_->write(isFirst_ ? "{\n  " : ",\n  ");
    out_->write(textOf(key, kOneLine) + ": ");
    isFirst_ = false;
}

void JsonStream::member(const char* key, const Json& value) {
    begin(key);
    out_->write(textOf(value, kOneLine));
}

void JsonStream::beginList(const char* key) {
    begin(key);
    out_->write("[");
    isFirst_ = true;
}

void JsonStream::item(const Json& value) {
    out_->write(isFirst_ ? "\n    " : ",\n    ");
    out_->write(textOf(value, kOneLine));
    isFirst_ = false;
}

void JsonStream::endList() {
    out_->write(isFirst_ ? "]" : "\n  ]");
    isFirst_ = false;
}

void JsonStream::end() { out_->write("\n}\n"); }

void printJsonLine(Output& out, const Json& document) { out.line(textOf(document, kOneLine)); }

}  // namespace sonaprobe::scope
