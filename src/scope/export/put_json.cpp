// The numbers of JSON documents that are no plain ones.

#include "scope/export/put_json.h"

namespace sonaprobe::scope {

char* putCode(char* at, uint32_t code) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    at = putText(at, "0x");
    for (int shift = 28; shift >= 0; shift -= 4) *at++ = kDigits[code >> shift & 15];
    return at;
}

char* putMicroseconds(char* at, Nanoseconds time) {
    if (time < 0) *at++ = '-';
    const auto unsignedTime = static_cast<uint64_t>(time);
    const uint64_t size = time < 0 ? 0 - unsignedTime : unsignedTime;
    at = putUnsigned(at, size / 1000);
    *at++ = '.';
    return putThreeDigits(at, static_cast<unsigned>(size % 1000));
}

}  // namespace sonaprobe::scope
