// Events as tables and JSON name them.

#pragma once

#include <cstdint>
#include <string>

#include "scope/json.h"

namespace sonaprobe::scope {

// "OrvelHDAPath::enable"; with its code after it where the name does not say which event it is:
// "OrvelHDAWidget::pinSense 0x05246E30". "code 0x01400004" where no decoder knows it, written so
// that no program takes it for a name.
std::string eventText(uint32_t code);

// Adds "code", and "driver" and "method" where a decoder knows it.
void addEvent(Json& entry, uint32_t code);

}  // namespace sonaprobe::scope
