// The progress bar on standard error: only where that is a terminal, only for work that takes more
// than a second, and only of what the program's first thread reads.

#pragma once

#include <chrono>
#include <cstdint>

namespace sonaprobe::scope {

class Progress {
  public:
    Progress();
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // How much of the input has been read; a total of 0 is an unknown one.
    void show(uint64_t done, uint64_t total);

    // Takes the bar, if there is one, off the terminal: before anything else is written there.
    static void clear();

    // From now on no bar: lines are being written to the same terminal.
    static void end();

  private:
    using Clock = std::chrono::steady_clock;

    bool enabled_;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point shown_;
};

}  // namespace sonaprobe::scope
