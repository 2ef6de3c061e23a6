// The decoders by audio class id.

#pragma once

#include <array>

#include "events/decoder.h"

namespace sonaprobe {

// Null for the classes whose records are unclassified.
extern const std::array<const Decoder*, 64> kClassTable;

}  // namespace sonaprobe
