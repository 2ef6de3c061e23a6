// The time column's text: wall clock with microseconds and delta, or the kernel's seconds.

#include "lines/event_time.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "events/number_text.h"
#include "lines/line_options.h"
#include "record/truncate.h"

namespace sonaprobe {

namespace {

char* putInTen(char* at, int64_t value) {
    return value >= 0 ? putUnsignedInTen(at, static_cast<uint64_t>(value))
                      : putSigned(at, value, 10);
}

constexpr uint64_t kFourDigits = 10'000;
constexpr uint64_t kTenDigits = 10'000'000'000;
constexpr size_t kClock = 8;
constexpr size_t kStampFour = 16;
constexpr size_t kStepFour = 28;

// "hh:mm:ss" as the zone has it that is now in force, which may change while a trace runs.
void putClock(std::time_t now, char* text) {
    tzset();
    std::tm local{};
    if (localtime_r(&now, &local) == nullptr) return;
    char clock[kClock + 1];
    if (std::strftime(clock, sizeof clock, "%H:%M:%S", &local) == kClock) {
        std::memcpy(text, clock, kClock);
    }
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

inline char* LocalTimeText::put(char* at, int64_t microseconds, int64_t delta) {
    const std::time_t now = std::time(nullptr);
    const auto stamp = static_cast<uint64_t>(microseconds) - base_;
    const auto step = static_cast<uint64_t>(delta);
    const bool near = stamp < kFourDigits && step < kFourDigits;
    if (!near || now != second_) return putWhole(at, now, microseconds, delta);

    std::memcpy(at, text_, sizeof text_);
    const uint64_t fours = digits::fourDigitsEach(stamp | step << 32);
    const unsigned leading = digits::leadingZeroBits<4>(fours >> 32);
    const uint64_t shown = (fours + digits::kZeros) ^ digits::zerosToBlanks(leading) << 32;
    const auto stampText = static_cast<uint32_t>(shown);
    const auto stepText = static_cast<uint32_t>(shown >> 32);
    std::memcpy(at + kStampFour, &stampText, sizeof stampText);
    std::memcpy(at + kStepFour, &stepText, sizeof stepText);
    return at + sizeof text_;
}

// Keeps the text where its numbers leave room for another last four digits: the stamp has five to
// ten, the step at most four. Not inlined, to keep put() short.
[[gnu::noinline]] char* LocalTimeText::putWhole(char* at, std::time_t now, int64_t microseconds,
                                                int64_t delta) {
    if (now != second_) {
        second_ = now;
        putClock(now, text_);
    }
    char* end = putText(at, {text_, kClock});
    end = putInTen(putText(end, " ["), microseconds);
    end = putInTen(putText(end, "]["), delta);
    end = putText(end, " us]");
    const auto stamp = static_cast<uint64_t>(microseconds);
    base_ = kFarFromAll;
    if (stamp >= kFourDigits && stamp < kTenDigits && static_cast<uint64_t>(delta) < kFourDigits) {
        base_ = stamp - stamp % kFourDigits;
        std::memcpy(text_, at, sizeof text_);
    }
    return end;
}

std::string_view EventTime::formatEventTime(uint64_t timestamp, uint32_t timeMode,
                                            double ticksPerMicrosecond, char* destination) {
    const double elapsed = static_cast<double>(timestamp) / ticksPerMicrosecond;
    const int64_t microseconds = truncateToSigned(elapsed);
    lastDelta_ = lastMicroseconds_ != 0 ? microseconds - lastMicroseconds_ : 0;
    lastMicroseconds_ = microseconds;

    char* end = destination;
    if (timeMode & kLocalTime) {
        end = localTime_.put(destination, lastMicroseconds_, lastDelta_);
    } else if (timeMode & kKernelTime) {
        end = putKernelTime(destination, truncateToUnsigned(elapsed));
    }
    const auto length = static_cast<size_t>(end - destination);
    return {destination, std::min(length, kEventTimeLength)};
}

}  // namespace sonaprobe
