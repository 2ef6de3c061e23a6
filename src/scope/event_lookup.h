// Events by their names on the command line.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sonaprobe::scope {

// The codes of "OrvelHDAPath::enable", "enable" or "0x05245C0C". Throws a Failure that names the
// option and the nearest names where nothing fits.
std::vector<uint32_t> codesNamed(const std::string& name, const char* option);

}  // namespace sonaprobe::scope
