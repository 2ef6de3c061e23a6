// JSON for programs: the schemas are in docs/schema/. Addresses and other 64-bit words are strings
// (units.h), times whole nanoseconds.

#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "scope/output.h"

namespace sonaprobe::scope {

using Json = nlohmann::ordered_json;

// "sonascope/cut/1": what a document says first, its command and the version of its schema.
std::string schemaName(const char* command, int version = 1);

// One document. Bytes that are no UTF-8 become U+FFFD.
void printJson(Output& out, const Json& document);

// One document with lists of any length, written as they come: an item a line.
class JsonStream {
  public:
    // Begins with the members of `head`; there is at least one.
    JsonStream(Output& out, const Json& head);

    void member(const char* key, const Json& value);
    void beginList(const char* key);
    void item(const Json& value);
    void endList();
    void end();

  private:
    void begin(const char* key);

    Output* out_;
    bool isFirst_ = true;  // of the document's members, or of the list's items
};

// One document in one line, for commands that print many.
void printJsonLine(Output& out, const Json& document);

}  // namespace sonaprobe::scope
