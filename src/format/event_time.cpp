// The time column's text: wall clock with microseconds and delta, or the kernel's seconds.

#include "format/event_time.h"

#include <algorithm>
#include <ctime>

#include "app/settings.h"
#include "format/digits.h"
#include "format/truncate.h"

namespace sonaprobe {

namespace {

int64_t lastMicroseconds = 0;
int64_t lastDelta = 0;

// hh:mm:ss of now, made anew only when the second has changed.
std::string_view wallClockText() {
    constexpr size_t kHour = 11;  // in "Sat Nov 21 10:11:22 2026\n"
    static char text[] = "        ";
    static std::time_t shownSecond = 0;
    const std::time_t now = std::time(nullptr);
    if (now != shownSecond) {
        shownSecond = now;
        if (const char* date = std::ctime(&now)) std::memcpy(text, date + kHour, sizeof text - 1);
    }
    return {text, sizeof text - 1};
}

char* putInTen(char* at, int64_t value) {
    return value >= 0 ? putUnsignedInTen(at, static_cast<uint64_t>(value))
                      : putSigned(at, value, 10);
}

char* putLocalTime(char* at) {
    at = putText(at, wallClockText());
    at = putText(at, " [");
    at = putInTen(at, lastMicroseconds);
    at = putText(at, "][");
    at = putInTen(at, lastDelta);
    return putText(at, " us]");
}

// Seconds within the minute and milliseconds, a point, microseconds: eight digits in all.
char* putKernelTime(char* at, uint64_t microseconds) {
    const auto withinMinute = static_cast<uint32_t>(microseconds % 60'000'000);
    const uint64_t eight = digits::eightDecimals(withinMinute) + digits::kZeros;
    digits::store(at, eight);
    at[5] = '.';
    digits::store(at + 6, eight >> 40);
    return at + 9;
}

}  // namespace

std::string_view formatEventTime(uint64_t timestamp, char* destination) {
    const double elapsed = static_cast<double>(timestamp) / settings.tickDivisor;
    const int64_t microseconds = truncateToSigned(elapsed);
    lastDelta = lastMicroseconds != 0 ? microseconds - lastMicroseconds : 0;
    lastMicroseconds = microseconds;

    char* end = destination;
    if (settings.timeMode & kLocalTime) {
        end = putLocalTime(destination);
    } else if (settings.timeMode & kKernelTime) {
        end = putKernelTime(destination, truncateToUnsigned(elapsed));
    }
    const auto length = static_cast<size_t>(end - destination);
    return {destination, std::min(length, kEventTimeLength)};
}

uint64_t elapsedSeconds(uint64_t earlier, uint64_t later) {
    return truncateToUnsigned(static_cast<double>(later - earlier) / settings.tickDivisor) /
           1'000'000;
}

}  // namespace sonaprobe
