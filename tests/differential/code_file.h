// A code-name file with every kind of line, and the plain way to look a name up in it.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace sonaprobe::differential {

std::string_view codeFileText();

// Codes that the file names, or nearly.
std::span<const uint32_t> namedCodes();

// The name of a code as a scan of the whole file finds it.
std::optional<std::string> scanForName(uint32_t code);

}  // namespace sonaprobe::differential
