// How tables and lines name an event.

#pragma once

#include <cstdint>
#include <string>

#include "events/event.h"
#include "lines/code_names.h"

namespace sonaprobe::scope {

// The code-name file of --names; an empty path is none. Throws a Failure where it cannot be read.
CodeNames readCodeNames(const std::string& path);

// "OrvelHDAPath::enable", as the record's line names it; of an event that no decoder knows the
// code-name file's name, escaped, else "code 0x01400004", which no program takes for a name.
std::string eventName(const Event& event, const CodeNames& names);

}  // namespace sonaprobe::scope
