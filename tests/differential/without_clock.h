// Lines without the time of day, which no two runs have in common.

#pragma once

#include <string>

namespace sonaprobe::differential {

// The line with HH:MM:SS in the place of the time of day that it begins with, if it does.
std::string withoutClock(std::string line);

}  // namespace sonaprobe::differential
