// The time column's text.

#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

namespace sonaprobe {

// The text is cut to 43 characters; while it is made, two numbers of 19 digits need more room.
constexpr size_t kEventTimeLength = 43;
constexpr size_t kEventTimeRoom = 64;

// "hh:mm:ss [1234567890][      1234 us]" as it was printed last. Between records that are near in
// time only the last four digits of the two numbers change, which are made side by side.
class LocalTimeText {
  public:
    char* put(char* at, int64_t microseconds, int64_t delta);

  private:
    static constexpr uint64_t kFarFromAll = uint64_t{1} << 63;

    char* putWhole(char* at, std::time_t now, int64_t microseconds, int64_t delta);

    char text_[36] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
    std::time_t second_ = 0;
    uint64_t base_ = kFarFromAll;  // the stamp without its last four digits
};

class EventTime {
  public:
    // Writes the time text of a stamp to `destination`, which has kEventTimeRoom bytes, in the form
    // that the bits of `timeMode` ask for, and returns it; with mode 0 nothing is written and the
    // text is empty. Every call takes part in the count of the time since the last one.
    std::string_view formatEventTime(uint64_t timestamp, uint32_t timeMode,
                                     double ticksPerMicrosecond, char* destination);

  private:
    int64_t lastMicroseconds_ = 0;
    int64_t lastDelta_ = 0;
    LocalTimeText localTime_;
};

}  // namespace sonaprobe
