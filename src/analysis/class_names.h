// The classes of records: what those of one driver, or of one subsystem, have in common.

#pragma once

#include <cstdint>
#include <string>

namespace sonaprobe {

// The class of a debug id: class word and class id where drivers or the audio server use the class
// word, else the class word alone. The other bits are 0.
uint32_t classOf(uint32_t debugid);

// "OrvelHDADriver", "audio server", "class 60", "class word 0x0140".
std::string classNameOf(uint32_t classOfRecords);

}  // namespace sonaprobe
