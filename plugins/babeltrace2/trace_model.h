// What Babeltrace calls a trace: one clock, one stream, and a class for each form of event.

#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "babeltrace2/reference.h"
#include "common/ordered_trace.h"

namespace sonaprobe::plugins {

// What the user says of the clock; the parameters are named as source.ctf.fs has them.
struct ClockOptions {
    bool isUnixEpoch = false;
    int64_t offsetSeconds = 0;
    int64_t offsetNanoseconds = 0;
};

class TraceModel {
  public:
    // `earliest` is the time that cycle 0 may not come before, as Babeltrace counts.
    TraceModel(bt_self_component* component, const std::string& name, const Clock& clock,
               const ClockOptions& options, int64_t earliest);

    const bt_stream* stream() const { return stream_.get(); }
    Reference<bt_packet> newPacket() const { return owned(bt_packet_create(stream_.get())); }

    // A cycle's time as Babeltrace counts it.
    int64_t nanoseconds(uint64_t cycle) const;

    // The message of an event, within a packet of this trace's stream.
    Reference<bt_message> messageOf(const sonaprobe_event* event, uint64_t cycle,
                                    const bt_packet* packet, bt_self_message_iterator* iterator);

  private:
    void setClock(const Clock& clock, const ClockOptions& options, int64_t earliest);
    void setContext();
    const bt_event_class* classOf(const sonaprobe_event* event);
    Reference<bt_event_class> newClassOf(const sonaprobe_event* event, bool isNamed);
    void fillContext(bt_field* context, const sonaprobe_event* event);
    void fillPayload(bt_field* payload, const sonaprobe_event* event);
    void fillText(bt_field* field, const char* text, size_t length);

    Reference<bt_trace_class> traceClass_;
    Reference<bt_clock_class> clockClass_;
    Reference<bt_stream_class> streamClass_;
    Reference<bt_trace> trace_;
    Reference<bt_stream> stream_;
    std::unordered_map<std::string, Reference<bt_event_class>> classes_;
    std::string key_;   // of an event's class
    std::string text_;  // on its way into a field
};

}  // namespace sonaprobe::plugins
