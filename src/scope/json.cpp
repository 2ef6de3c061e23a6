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

void printJsonLine(Output& out, const Json& document) { out.line(textOf(document, kOneLine)); }

}  // namespace sonaprobe::scope
