// Which readings are numbers.

#include "common/number.h"

#include <cstdlib>

namespace sonaprobe::plugins {

namespace {

// The word of a time between two stamps is the earlier; only the text has both.
bool isElapsed(const sonaprobe_value* value) {
    return sonaprobe_value_reading(value) == SONAPROBE_READING_SECONDS;
}

}  // namespace

Form formOf(const sonaprobe_value* value) {
    switch (sonaprobe_value_reading(value)) {
        case SONAPROBE_READING_SIGNED: return Form::signedNumber;
        case SONAPROBE_READING_UNSIGNED:
        case SONAPROBE_READING_NANOSECONDS:
        case SONAPROBE_READING_TICKS:
        case SONAPROBE_READING_SECONDS: return Form::number;
        case SONAPROBE_READING_HEXADECIMAL:
        case SONAPROBE_READING_POINTER: return Form::hexadecimal;
        default: return Form::text;
    }
}

unsigned bitsOf(const sonaprobe_value* value) {
    return isElapsed(value) ? 64 : sonaprobe_value_bits(value);
}

uint64_t numberOf(const sonaprobe_value* value) {
    if (!isElapsed(value)) return sonaprobe_value_word(value);
    return std::strtoull(sonaprobe_value_text(value, nullptr), nullptr, 10);
}

}  // namespace sonaprobe::plugins
