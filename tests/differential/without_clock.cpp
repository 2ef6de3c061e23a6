// Masking the time of day.

#include "without_clock.h"

#include <cctype>
#include <string_view>

namespace sonaprobe::differential {

std::string withoutClock(std::string line) {
    constexpr std::string_view kMask = "HH:MM:SS";
    bool isClock = line.size() >= kMask.size();
    for (size_t i = 0; isClock && i < kMask.size(); ++i) {
        const auto c = static_cast<unsigned char>(line[i]);
        isClock = kMask[i] == ':' ? c == ':' : std::isdigit(c) != 0;
    }
    if (isClock) line.replace(0, kMask.size(), kMask);
    return line;
}

}  // namespace sonaprobe::differential
