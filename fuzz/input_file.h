// The input as a file that is in no folder: a real one costs more than what is done with it.

#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace sonaprobe::fuzz {

// The path to open it under, any number of times; the bytes must last as long. It has no size, as
// a pipe has none.
const std::string& inputFile(std::span<const uint8_t> bytes);

}  // namespace sonaprobe::fuzz
