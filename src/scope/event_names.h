// How tables and lines name an event.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "events/event.h"
#include "lines/code_names.h"
#include "scope/json.h"

namespace sonaprobe::scope {

// The code-name file of --names; an empty path is none. Throws a Failure where it cannot be read.
CodeNames readCodeNames(const std::string& path);

// "OrvelHDAPath::enable", as the record's line names it; of an event that no decoder knows the
// code-name file's name, escaped, else "code 0x01400004", which no program takes for a name.
std::string eventName(const Event& event, const CodeNames& names);

// The same of an event without a record. Where the name does not say which event it is its code
// follows: "OrvelHDAWidget::pinSense 0x05246E30".
std::string eventName(uint32_t code, const CodeNames& names);

// Adds "code", and "driver" and "method" where a decoder knows it, else "name" where the code-name
// file does.
void addEvent(Json& entry, uint32_t code, const CodeNames& names);

// The codes of "OrvelHDAPath::enable", "enable" or "0x05245C0C". Throws a Failure that names the
// option and the nearest names where nothing fits.
std::vector<uint32_t> codesNamed(const std::string& name, const char* option);

}  // namespace sonaprobe::scope
