// Real numbers as text.

#include "format/digits.h"

#include <charconv>

namespace sonaprobe {

char* putReal(char* at, double value, unsigned decimals, unsigned width) {
    char text[kMaxNumberLength];
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed,
                                      static_cast<int>(decimals));
    const auto length = static_cast<size_t>(result.ptr - text);
    if (length < width) at = putFill(at, ' ', width - length);
    return putText(at, {text, length});
}

}  // namespace sonaprobe
