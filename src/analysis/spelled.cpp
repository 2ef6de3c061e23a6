// Reads times and numbers.

#include "analysis/spelled.h"

#include <charconv>

namespace sonaprobe {

namespace {

struct Unit {
    std::string_view name;
    Nanoseconds length;
};
// Micro may be spelled with either of its two characters.
constexpr Unit kUnits[] = {
    {"ns", 1},         {"us", 1000},         {"\u00B5s", 1000},       {"\u03BCs", 1000},
    {"ms", 1'000'000}, {"s", 1'000'000'000}, {"min", 60'000'000'000}, {"h", 3'600'000'000'000},
};

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Takes a minus sign off the front.
bool takeSign(std::string_view& text) {
    if (!text.starts_with('-')) return false;
    text.remove_prefix(1);
    return true;
}

// Takes the digits off the front and adds them to a number that saturates.
size_t takeDigits(std::string_view& text, Wide& number, size_t most) {
    constexpr Wide kLimit = Wide{1} << 80;
    size_t taken = 0;
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) {
        if (taken < most) number = number * 10 + (text.front() - '0');
        if (number > kLimit) number = kLimit;
        ++taken;
    }
    return taken;
}

}  // namespace

std::optional<Nanoseconds> spelledTime(std::string_view text) {
    constexpr size_t kDecimals = 12;  // further ones are below a nanosecond of any unit
    const bool negative = takeSign(text);
    Wide whole = 0;
    Wide fraction = 0;
    size_t digits = takeDigits(text, whole, text.size());
    size_t decimals = 0;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        decimals = takeDigits(text, fraction, kDecimals);
        digits += decimals;
    }
    if (digits == 0) return std::nullopt;
    while (text.starts_with(' ')) text.remove_prefix(1);
    for (const Unit& unit : kUnits) {
        if (text != unit.name) continue;
        Wide below = fraction * unit.length;
        for (size_t i = 0; i < decimals && i < kDecimals; ++i) below /= 10;
        const Wide nanoseconds = whole * unit.length + below;
        return saturated(negative ? -nanoseconds : nanoseconds);
    }
    return std::nullopt;
}

std::optional<uint64_t> spelledNumber(std::string_view text) {
    const bool negative = takeSign(text);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
    if (error != std::errc{} || stop != end) return std::nullopt;
    return negative ? 0 - number : number;
}

}  // namespace sonaprobe
