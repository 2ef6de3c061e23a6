// Text on its way to a file or to standard output, written at a cursor.

#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "lines/output_line.h"

namespace sonaprobe::scope {

class TextOutput {
  public:
    // What may be written at the cursor before it is put back.
    static constexpr size_t kRoom = 1 << 16;

    // Text is handed over once there are so many bytes of it.
    explicit TextOutput(Sink sink, size_t gathered = kGathered)
        : sink_(sink), gathered_(gathered), buffer_(gathered + kRoom) {}

    char* cursor() { return buffer_.data() + used_; }
    void moveTo(const char* at) {
        used_ = static_cast<size_t>(at - buffer_.data());
        if (used_ >= gathered_) handOver();
    }

    // A text of any length. A long one is not copied.
    void put(std::string_view text) {
        if (text.size() > kLong) {
            handOver();
            sink_.write(sink_.context, text.data(), text.size());
            return;
        }
        if (text.empty()) return;  // there may be no address to copy from
        std::memcpy(cursor(), text.data(), text.size());
        moveTo(cursor() + text.size());
    }

    void handOver() {
        if (used_ > 0) sink_.write(sink_.context, buffer_.data(), used_);
        used_ = 0;
    }

    // What has not been handed over, and to drop it.
    std::string_view text() const { return {buffer_.data(), used_}; }
    void clear() { used_ = 0; }

  private:
    static constexpr size_t kGathered = 1 << 16;
    static constexpr size_t kLong = 1 << 12;

    Sink sink_;
    size_t gathered_;
    std::vector<char> buffer_;
    size_t used_ = 0;
};

}  // namespace sonaprobe::scope
