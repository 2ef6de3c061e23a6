// Records to messages. Where records are missing, a packet ends; the first event after them is a
// packet of its own, whose end is the end of the gap: so CTF can say it.

#include "babeltrace2/messages.h"

#include <limits>
#include <utility>

namespace sonaprobe::plugins {

namespace {

// Readers of CTF find their way by packets, and hold one at a time.
constexpr uint64_t kEventsInPacket = 65'536;

}  // namespace

Messages::Messages(bt_self_message_iterator* iterator, std::string path,
                   const ClockOptions& options)
    : iterator_(iterator), path_(std::move(path)), options_(options) {}

int Messages::begin() {
    ready_.clear();
    packet_.reset();
    trace_.reset();
    records_.emplace();
    return records_->open(path_.c_str());
}

void Messages::beginTrace(const Clock& clock) {
    // Later than the trace before by a nanosecond, so that whoever merges them keeps their order.
    const int64_t earliest =
        trace_ ? trace_->nanoseconds(cycle_) + 1 : std::numeric_limits<int64_t>::min();
    endTrace();
    bt_self_component* component = bt_self_message_iterator_borrow_component(iterator_);
    const std::string name = path_.substr(path_.find_last_of('/') + 1);
    trace_.emplace(component, name, clock, options_, earliest);
    clock_ = clock.number;
    put(bt_message_stream_beginning_create(iterator_, trace_->stream()));
}

void Messages::endTrace() {
    if (!trace_) return;
    endPacket();
    put(bt_message_stream_end_create(iterator_, trace_->stream()));
    trace_.reset();
}

void Messages::beginPacket() {
    packet_ = trace_->newPacket();
    eventsInPacket_ = 0;
    put(bt_message_packet_beginning_create_with_default_clock_snapshot(iterator_, packet_.get(),
                                                                       cycle_));
}

void Messages::endPacket() {
    if (!packet_) return;
    put(bt_message_packet_end_create_with_default_clock_snapshot(iterator_, packet_.get(), cycle_));
    packet_.reset();
}

void Messages::tellMissing(uint64_t count, uint64_t cycle) {
    if (!packet_) beginPacket();
    endPacket();
    bt_message* message = bt_message_discarded_events_create_with_default_clock_snapshots(
        iterator_, trace_->stream(), cycle_, cycle);
    put(message);
    bt_message_discarded_events_set_count(message, count);
}

void Messages::take(const OrderedRecord& record) {
    const bool isFirst = !trace_ || record.clock.number != clock_;
    if (isFirst) {
        beginTrace(record.clock);
        cycle_ = record.cycle;
    }
    if (record.missing > 0) tellMissing(record.missing, record.cycle);
    cycle_ = record.cycle;
    if (!packet_) beginPacket();
    const sonaprobe_event* event = records_->eventOf(record.record);
    ready_.push_back(trace_->messageOf(event, record.cycle, packet_.get(), iterator_));
    if (record.missing > 0 || ++eventsInPacket_ == kEventsInPacket) endPacket();
}

void Messages::finish() {
    if (trace_ && records_->missingAtEnd() > 0) {
        tellMissing(records_->missingAtEnd(), cycle_);
        beginPacket();
    }
    endTrace();
}

int64_t Messages::next(bt_message_array_const messages, uint64_t room) {
    OrderedRecord record;
    int result = 1;
    while (ready_.size() < room && result == 1) {
        result = records_->next(record);
        if (result == 1) {
            take(record);
        } else if (result == 0) {
            finish();
        }
    }
    if (ready_.empty()) return result;
    uint64_t count = 0;
    for (; count < room && !ready_.empty(); ++count) {
        messages[count] = ready_.front().release();
        ready_.pop_front();
    }
    return static_cast<int64_t>(count);
}

}  // namespace sonaprobe::plugins
