// The conversions of lines: each makes the text that printf makes and stays within the slack that
// it claims after it, in memory where one more byte is found.

#include "events/number_text.h"

#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <memory>
#include <string>

#include "fuzz.h"
#include "lines/event_time.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

[[gnu::format(printf, 1, 2)]] std::string printed(const char* format, ...) {
    char text[128];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    return {text, static_cast<size_t>(length)};
}

// Runs a conversion in a block that ends with the slack after its text.
template <class Put>
void compare(const std::string& expected, Put put) {
    const size_t room = expected.size() + kDigitSlack;
    const auto block = std::make_unique_for_overwrite<char[]>(room);
    const char* const end = put(block.get());
    const std::string made(block.get(), static_cast<size_t>(end - block.get()));
    if (made == expected) return;
    std::fprintf(stderr, "'%s' in the place of '%s'\n", made.c_str(), expected.c_str());
    require(false, "a conversion makes the text of printf");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto value = input.number<uint64_t>();
    const auto sign = static_cast<int64_t>(value);
    const int width = input.number<uint8_t>() % 25;
    const auto field = static_cast<unsigned>(width);
    const auto below1000 = static_cast<unsigned>(value % 1000);

    compare(printed("%" PRIu64, value), [&](char* at) { return putUnsigned(at, value); });
    compare(printed("%*" PRIu64, width, value),
            [&](char* at) { return putUnsigned(at, value, field); });
    compare(printed("%0*" PRIu64, width, value),
            [&](char* at) { return putUnsignedZeroFilled(at, value, field); });
    compare(printed("%10" PRIu64, value), [&](char* at) { return putUnsignedInTen(at, value); });
    compare(printed("%03u", below1000), [&](char* at) { return putThreeDigits(at, below1000); });
    compare(printed("%02u", below1000 / 10),
            [&](char* at) { return putTwoDigits(at, below1000 / 10); });
    compare(printed("%" PRId64, sign), [&](char* at) { return putSigned(at, sign); });
    compare(printed("%*" PRId64, width, sign),
            [&](char* at) { return putSigned(at, sign, field); });
    compare(printed("%0*" PRId64, width, sign),
            [&](char* at) { return putSignedZeroFilled(at, sign, field); });
    compare(printed("%" PRIx64, value), [&](char* at) { return putHex(at, value); });
    compare(printed("%*" PRIx64, width, value), [&](char* at) { return putHex(at, value, field); });
    compare(printed("%0*" PRIx64, width, value),
            [&](char* at) { return putHexZeroFilled(at, value, field); });
    compare(printed("0x%" PRIx64, value), [&](char* at) { return putPointer(at, value); });

    const int decimals = 1 + input.number<uint8_t>() % 8;
    double real = 0;
    const auto bits = input.number<uint64_t>();
    std::memcpy(&real, &bits, sizeof real);
    const bool taken = !std::signbit(real) && real < 0x1p64;
    if (!taken) real = static_cast<double>(value);
    if (real < 0x1p64) {
        compare(printed("%*.*f", width, decimals, real),
                [&](char* at) { return putReal(at, real, decimals, field); });
    }

    const auto text = input.rest();
    const std::string exact(text.begin(), text.end());
    const auto copy = std::make_unique<char[]>(exact.size());
    std::memcpy(copy.get(), exact.data(), exact.size());
    compare(exact, [&](char* at) { return putText(at, {copy.get(), exact.size()}); });

    const auto time = std::make_unique<char[]>(kEventTimeRoom);
    const uint32_t mode = value & 3;
    require(EventTime().formatEventTime(value, mode, real, time.get()).size() <= kEventTimeLength,
            "time texts are cut");
    return 0;
}
