// Real numbers as text.

#include "events/number_text.h"

namespace sonaprobe {

namespace {

__extension__ using Wide = unsigned __int128;

// The fixed point of fractions: far enough down that none of a real's bits are lost.
constexpr unsigned kFractionBits = 62;
constexpr double kFractionScale = 0x1p62;

constexpr uint64_t kPowersOfTen[] = {1,       10,        100,        1'000,      10'000,
                                     100'000, 1'000'000, 10'000'000, 100'000'000};

}  // namespace

// The whole part and the fraction are exact, and so is their rounding: half-way to the even digit.
char* putReal(char* at, double value, unsigned decimals, unsigned width) {
    auto whole = static_cast<uint64_t>(value);
    const double fraction = value - static_cast<double>(whole);
    const uint64_t power = kPowersOfTen[decimals];
    const Wide scaled = Wide{static_cast<uint64_t>(fraction * kFractionScale)} * power;
    auto tail = static_cast<uint64_t>(scaled >> kFractionBits);
    const uint64_t rest = static_cast<uint64_t>(scaled) & ((uint64_t{1} << kFractionBits) - 1);
    constexpr uint64_t kHalf = uint64_t{1} << (kFractionBits - 1);
    tail += rest + tail % 2 > kHalf ? 1U : 0U;
    if (tail == power) {
        tail = 0;
        ++whole;
    }
    const unsigned behindWhole = 1 + decimals;
    at = putUnsigned(at, whole, width > behindWhole ? width - behindWhole : 0);
    *at = '.';
    constexpr unsigned kFour = 4;
    const auto number = static_cast<uint32_t>(tail);
    if (decimals <= kFour) {
        digits::store(at + 1,
                      (digits::fourDecimals(number) + digits::kZeros) >> 8 * (kFour - decimals));
    } else {
        digits::store(
            at + 1, (digits::eightDecimals(number) + digits::kZeros) >> 8 * (2 * kFour - decimals));
    }
    return at + behindWhole;
}

}  // namespace sonaprobe
