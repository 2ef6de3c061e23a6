// The line being printed: assembled in one buffer and handed to standard output in one call, alone
// or together with the lines before it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "events/block_text.h"

namespace sonaprobe {

class OutputLine {
  public:
    // What a line may hold beside its indentation: all columns and the longest text stay below it.
    static constexpr size_t kTextRoom = 4096;

    // From now on lines are handed over several at a time.
    void gather() { handOverAt_ = kGathered; }

    // Hands over what there is. To be called before anything else goes to standard output, before
    // it is flushed, and at the end.
    void handOver();

    // Drops what there is: the next line begins behind a line end.
    void beginAnew() {
        at_ = buffer_;
        *at_++ = '\n';
    }

    // Where the next character goes. A writer takes the cursor, writes, and puts it back.
    char* cursor() { return at_; }
    void moveTo(char* at) { at_ = at; }

    // Any number of blanks; more than the buffer holds go to standard output in pieces.
    void blanks(uint64_t count) {
        if (count > room()) count = spill(count);
        std::memset(at_, ' ', kTextBlock);
        if (count > kTextBlock) std::memset(at_, ' ', count);
        at_ += count;
    }

    // Ends the line with "\n" and hands it over, or keeps it to be gathered.
    void end() {
        *at_++ = '\n';
        if (used() >= handOverAt_) handOver();
    }

  private:
    static constexpr size_t kGathered = 65536;
    static constexpr size_t kFillRoom = kGathered + 4096;  // lines before this one, and blanks

    size_t used() const { return static_cast<size_t>(at_ - buffer_); }
    size_t room() const { return used() < kFillRoom ? kFillRoom - used() : 0; }
    uint64_t spill(uint64_t count);

    size_t handOverAt_ = 0;
    char buffer_[kFillRoom + kTextRoom] = {};
    char* at_ = buffer_;
};

extern OutputLine outputLine;

}  // namespace sonaprobe
