// Numbers to text.

#include "scope/units.h"

#include <array>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>

namespace sonaprobe::scope {

namespace {

struct Unit {
    const char* name;
    double nanoseconds;
};
constexpr std::array kUnits{Unit{"ns", 1},  Unit{"µs", 1e3},   Unit{"ms", 1e6},
                            Unit{"s", 1e9}, Unit{"min", 60e9}, Unit{"h", 3600e9}};

[[gnu::format(printf, 1, 2)]] std::string printed(const char* format, ...) {
    char text[64];
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    return text;
}

uint64_t magnitudeOf(int64_t value) {
    return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

// Three digits that matter; what is below 1 of the smallest unit has none.
int decimalsOf(double value) { return value < 9.995 ? 2 : value < 99.95 ? 1 : 0; }

}  // namespace

std::string durationText(int64_t nanoseconds) {
    const double whole = static_cast<double>(magnitudeOf(nanoseconds));
    const char* const sign = nanoseconds < 0 ? "-" : "";
    size_t unit = 0;
    // A number that would be rounded up to the next unit is one of that unit.
    while (unit + 1 < kUnits.size() &&
           whole >= kUnits[unit + 1].nanoseconds * (unit == 0 ? 1 : 0.9995)) {
        ++unit;
    }
    const double value = whole / kUnits[unit].nanoseconds;
    const int decimals = unit == 0 ? 0 : decimalsOf(value);
    return printed("%s%.*f %s", sign, decimals, value, kUnits[unit].name);
}

std::string timeText(int64_t nanoseconds) {
    const uint64_t microseconds = magnitudeOf(nanoseconds) / 1000;
    return printed("%s%" PRIu64 ".%03" PRIu64 " %03" PRIu64 " s", nanoseconds < 0 ? "-" : "",
                   microseconds / 1'000'000, microseconds / 1000 % 1000, microseconds % 1000);
}

std::string countText(uint64_t count) {
    const std::string digits = std::to_string(count);
    std::string text;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
        text += digits[i];
    }
    return text;
}

std::string shareText(double share) {
    const double percent = share * 100;
    if (percent > 0 && percent < 0.05) return "<0.1 %";
    return printed("%.*f %%", percent < 99.95 ? 1 : 0, percent);
}

std::string wordText(uint64_t word) { return printed("0x%016" PRIx64, word); }

std::string shortWordText(uint64_t word) { return printed("0x%" PRIx64, word); }

std::string codeText(uint32_t code) { return printed("0x%08" PRIX32, code); }

}  // namespace sonaprobe::scope
