// Values as numbers.

#pragma once

#include <cstdint>
#include <sonaprobe/sonaprobe.h>

namespace sonaprobe::plugins {

enum class Form { signedNumber, number, hexadecimal, text };

// How a value is best told: as a text where its word alone would not say it.
Form formOf(const sonaprobe_value* value);

// How many bits numberOf() may take.
unsigned bitsOf(const sonaprobe_value* value);

// The number of a value that is no text, sign-extended where it is signed.
uint64_t numberOf(const sonaprobe_value* value);

}  // namespace sonaprobe::plugins
