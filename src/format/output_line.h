// The line being printed: assembled in one buffer and handed to standard output in one call.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sonaprobe {

class OutputLine {
  public:
    // What a line may hold beside its indentation: all columns and the longest text stay below it.
    static constexpr size_t kTextRoom = 4096;

    // Where the next character goes. A writer takes the cursor, writes, and puts it back.
    char* cursor() { return at_; }
    void moveTo(char* at) { at_ = at; }

    // Any number of blanks; more than the buffer holds go to standard output in pieces.
    void blanks(uint64_t count) {
        if (count > room()) count = spill(count);
        std::memset(at_, ' ', count);
        at_ += count;
    }

    // Ends the line with "\n" and hands it over.
    void end() {
        *at_++ = '\n';
        handOver();
    }

  private:
    static constexpr size_t kIndentRoom = 4096;

    size_t room() const {
        const auto used = static_cast<size_t>(at_ - buffer_);
        return used < kIndentRoom ? kIndentRoom - used : 0;
    }
    void handOver();
    uint64_t spill(uint64_t count);

    char buffer_[kIndentRoom + kTextRoom] = {};
    char* at_ = buffer_;
};

extern OutputLine outputLine;

}  // namespace sonaprobe
