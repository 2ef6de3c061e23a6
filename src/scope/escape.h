// Everything a file says is data: no control character of it reaches a terminal.

#pragma once

#include <string>
#include <string_view>

namespace sonaprobe::scope {

// Whether it is printable ASCII alone, and escaped() leaves it as it is.
bool isPrintable(std::string_view text);

// Printable ASCII as it is; every other byte as \n, \t, \r or \xNN.
std::string escaped(std::string_view text);

}  // namespace sonaprobe::scope
