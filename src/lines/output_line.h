// The line being printed: assembled in one buffer and handed to a sink in one call, alone or
// together with the lines before it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "events/block_text.h"
#include "events/log_text.h"

namespace sonaprobe {

// Where lines go: whole lines, or, of a line with an endless indentation, its pieces in order.
struct Sink {
    void (*write)(void* context, const char* text, size_t length) = nullptr;
    void* context = nullptr;
};

class OutputLine {
  public:
    // What lines that are gathered may take before they are handed over.
    static constexpr size_t kGathered = 65536;
    // The indentation that fits into the buffer of a line that is not gathered; more is handed over
    // in pieces of this length.
    static constexpr size_t kFillRoom = kGathered + 4096;

    // The buffer is written before it is read; to clear it would touch all of its pages.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
    explicit OutputLine(Sink sink) : sink_(sink), at_(buffer_) {}
    OutputLine(const OutputLine&) = delete;
    OutputLine& operator=(const OutputLine&) = delete;

    // From now on lines are handed over several at a time, once they take so many bytes; 0: one by
    // one.
    void gather(size_t bytes = kGathered) { handOverAt_ = bytes; }

    // Hands over what there is. To be called before anything else goes to the sink's end, before
    // that is flushed, and at the end.
    void handOver() {
        const auto length = used();
        at_ = buffer_;
        if (length > 0) sink_.write(sink_.context, buffer_, length);
    }

    // Drops what there is: the next line begins after a line end.
    void beginAnew() {
        at_ = buffer_;
        *at_++ = '\n';
    }

    // Where the next character goes. A writer takes the cursor, writes, and puts it back. All
    // columns and the longest text fit, whatever the indentation was.
    char* cursor() { return at_; }
    void moveTo(char* at) { at_ = at; }

    // Any number of blanks; more than the buffer holds go to the sink in pieces.
    void blanks(uint64_t count) {
        const size_t last = count > room() ? spill(count) : static_cast<size_t>(count);
        std::memset(at_, ' ', kTextBlock);
        if (last > kTextBlock) std::memset(at_, ' ', last);
        at_ += last;
    }

    // Ends the line with "\n" and hands it over, or keeps it to be gathered.
    void end() {
        *at_++ = '\n';
        endText();
    }

    // The same for a text that brings its own line end, or goes without.
    void endText() {
        if (used() >= handOverAt_) handOver();
    }

  private:
    static constexpr size_t kColumns = 512;  // before the text, the name among them

    size_t used() const { return static_cast<size_t>(at_ - buffer_); }
    size_t room() const { return used() < kFillRoom ? kFillRoom - used() : 0; }
    size_t spill(uint64_t count);

    Sink sink_;
    size_t handOverAt_ = 0;
    char* at_;
    char buffer_[kFillRoom + kColumns + kLogTextRoom];
};

}  // namespace sonaprobe
