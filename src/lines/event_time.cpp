// The time column's text: wall clock with microseconds and delta, or the kernel's seconds.

#include "lines/event_time.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "events/number_text.h"
#include "probe/settings.h"
#include "record/truncate.h"

namespace sonaprobe {

namespace {

int64_t lastMicroseconds = 0;
int64_t lastDelta = 0;

char* putInTen(char* at, int64_t value) {
    return value >= 0 ? putUnsignedInTen(at, static_cast<uint64_t>(value))
                      : putSigned(at, value, 10);
}

// "hh:mm:ss [1234567890][      1234 us]" as it was printed last. Between records that are near in
// time only the last four digits of the two numbers change, which are made side by side.
class LocalTimeText {
  public:
    char* put(char* at, int64_t microseconds, int64_t delta) {
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

  private:
    static constexpr uint64_t kFourDigits = 10'000;
    static constexpr uint64_t kTenDigits = 10'000'000'000;
    static constexpr uint64_t kFarFromAll = uint64_t{1} << 63;
    static constexpr size_t kClock = 8;
    static constexpr size_t kStampFour = 16;
    static constexpr size_t kStepFour = 28;

    // Keeps the text where its numbers leave room for another last four digits: the stamp has
    // five to ten, the step at most four. Not inlined, to keep put() short.
    [[gnu::noinline]] char* putWhole(char* at, std::time_t now, int64_t microseconds,
                                     int64_t delta) {
        if (now != second_) {
            constexpr size_t kHour = 11;  // in "Sat Nov 21 10:11:22 2026\n"
            second_ = now;
            if (const char* date = std::ctime(&now)) std::memcpy(text_, date + kHour, kClock);
        }
        char* end = putText(at, {text_, kClock});
        end = putInTen(putText(end, " ["), microseconds);
        end = putInTen(putText(end, "]["), delta);
        end = putText(end, " us]");
        const auto stamp = static_cast<uint64_t>(microseconds);
        base_ = kFarFromAll;
        if (stamp >= kFourDigits && stamp < kTenDigits &&
            static_cast<uint64_t>(delta) < kFourDigits) {
            base_ = stamp - stamp % kFourDigits;
            std::memcpy(text_, at, sizeof text_);
        }
        return end;
    }

    char text_[36] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
    std::time_t second_ = 0;
    uint64_t base_ = kFarFromAll;  // the stamp without its last four digits
};

constinit LocalTimeText localTimeText;

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
        end = localTimeText.put(destination, lastMicroseconds, lastDelta);
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
