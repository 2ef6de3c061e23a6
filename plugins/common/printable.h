// What a driver has said, for terminals and for formats whose texts end with a zero byte.

#pragma once

#include <cstddef>
#include <string>

namespace sonaprobe::plugins {

// Adds a text: printable ASCII as it is; every other byte as \n, \t, \r or \xNN, as sonascope has
// it.
void appendPrintable(std::string& out, const char* text, size_t length);

}  // namespace sonaprobe::plugins
