// Events as tables and JSON name them.

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

// "OrvelHDAPath::enable"; with its code after it where the name does not say which event it is:
// "OrvelHDAWidget::pinSense 0x05246E30". "code 0x01400004" where no decoder knows it, written so
// that no program takes it for a name, nor `names` name it.
std::string eventText(uint32_t code, const CodeNames& names = {});

// The name that the record's own line has, which its text may give: "OrvelHDAPath::enable"; that of
// eventText() where no decoder knows it.
std::string eventName(const Event& event, const CodeNames& names);

// Adds "code", and "driver" and "method" where a decoder knows it, else "name" where `names` do.
void addEvent(Json& entry, uint32_t code, const CodeNames& names = {});

// The codes of "OrvelHDAPath::enable", "enable" or "0x05245C0C". Throws a Failure that names the
// option and the nearest names where nothing fits.
std::vector<uint32_t> codesNamed(const std::string& name, const char* option);

}  // namespace sonaprobe::scope
