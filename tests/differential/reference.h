// The lines that records must print, made the plain way: one printf after the other.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "events/decoder.h"
#include "option_set.h"
#include "record/trace_record.h"

namespace sonaprobe::differential {

// Keeps what the program keeps from one record to the next, so it must see every record that the
// program sees. The time of day stands as HH:MM:SS in its lines.
class Reference {
  public:
    explicit Reference(int64_t depth = 0) : depth_(depth) {}

    // What the record prints, with its line end; empty if it prints nothing.
    std::string print(const OptionSet& options, const TraceRecord& record);

  private:
    std::string decoded(const Decoder& decoder, const TraceRecord& record);
    std::string prefix(const TraceRecord& record, std::string_view group, std::string_view method,
                       uint64_t object);
    std::string unclassified(const TraceRecord& record);
    std::string basic(const TraceRecord& record);
    std::string timeText(uint64_t timestamp);

    const OptionSet* options_ = nullptr;
    int64_t depth_;
    int64_t lastMicroseconds_ = 0;
    uint64_t firstStamp_ = 0;
    uint64_t previousStamp_ = 0;
};

}  // namespace sonaprobe::differential
