// The messages of one raw file, in the order in which Babeltrace wants them.

#pragma once

#include <deque>
#include <optional>
#include <string>

#include "babeltrace2/trace_model.h"

namespace sonaprobe::plugins {

class Messages {
  public:
    Messages(bt_self_message_iterator* iterator, std::string path, const ClockOptions& options);

    // Opens the file anew, from its start: 0 or a negative errno value.
    int begin();

    // Up to `room` messages, which then are the caller's: how many, 0 at the end, or a negative
    // errno value. Want of memory is thrown, as std::bad_alloc.
    int64_t next(bt_message_array_const messages, uint64_t room);

    const std::string& path() const { return path_; }

  private:
    void take(const OrderedRecord& record);
    void beginTrace(const Clock& clock);
    void endTrace();
    void beginPacket();
    void endPacket();
    void tellMissing(uint64_t count, uint64_t cycle);
    void finish();
    void put(bt_message* message) { ready_.push_back(owned(message)); }

    bt_self_message_iterator* iterator_;
    std::string path_;
    ClockOptions options_;
    std::optional<OrderedTrace> records_;
    std::optional<TraceModel> trace_;
    uint64_t clock_ = 0;  // its number
    Reference<bt_packet> packet_;
    uint64_t eventsInPacket_ = 0;
    uint64_t cycle_ = 0;  // of the latest message
    std::deque<Reference<bt_message>> ready_;
};

}  // namespace sonaprobe::plugins
