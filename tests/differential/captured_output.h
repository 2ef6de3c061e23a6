// What the program prints, caught on its way to standard output.

#pragma once

#include <string>
#include <vector>

namespace sonaprobe::differential {

// From its making to finish(), standard output goes to a file of no name.
class CapturedOutput {
  public:
    CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput();

    // Ends a part: what has been printed since the last one.
    void endPart();

    // Gives standard output back; the parts in their order.
    std::vector<std::string> finish();

  private:
    int file_;
    int standardOutput_;
    std::vector<size_t> ends_;
};

// The text with HH:MM:SS in the place of a time of day at its front.
std::string withoutClock(std::string line);

}  // namespace sonaprobe::differential
