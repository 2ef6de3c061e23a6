// What a watch says while it goes on, on standard error: lines, and on a terminal a last line that
// is drawn anew.

#pragma once

#include <string>

#include "analysis/trace_clock.h"

namespace sonaprobe::scope {

class StatusLine {
  public:
    StatusLine();
    ~StatusLine() { clear(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    // Whether it is time to draw again.
    bool isDue(Nanoseconds now) const { return enabled_ && now >= next_; }

    // Draws the text, unless the terminal takes nothing just now: a watch must not wait for it.
    void draw(const std::string& text, Nanoseconds now);

    // A message that stays.
    void say(const std::string& message);

    void clear();

  private:
    static constexpr Nanoseconds kInterval = 500'000'000;

    bool enabled_;
    bool drawn_ = false;
    Nanoseconds next_ = 0;
};

}  // namespace sonaprobe::scope
