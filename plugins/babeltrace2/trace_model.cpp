// Events to event classes and fields. An event's class is named by driver and method; the texts of
// an event have values of their own, so each of them has a class of that name.

#include "babeltrace2/trace_model.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "common/event_name.h"
#include "common/number.h"
#include "common/printable.h"

namespace sonaprobe::plugins {

namespace {

constexpr int64_t kSecond = 1'000'000'000;
__extension__ using Wide = __int128;

// Codes in a file of garbage are many: from here on, they share a class.
constexpr size_t kMostClasses = 10'000;

// The fields of each event, in this order.
struct ContextField {
    const char* name;
    unsigned bits;
    bool isHexadecimal;
};
constexpr ContextField kContext[] = {{"thread", 64, true}, {"cpu", 32, false},
                                     {"object", 64, true}, {"failure", 1, false},
                                     {"code", 32, true},   {"slot", 64, false}};
constexpr const char* kQualifiers[] = {"none", "start", "end", "both"};

// A record without a text has these of its words instead.
constexpr unsigned kArguments = 4;

bool hasText(const sonaprobe_event* event) {
    const sonaprobe_outcome outcome = sonaprobe_event_outcome(event);
    return outcome == SONAPROBE_OUTCOME_TEXT || outcome == SONAPROBE_OUTCOME_GATED;
}

class Fields {
  public:
    explicit Fields(bt_trace_class* traceClass)
        : traceClass_(traceClass), structure_(owned(bt_field_class_structure_create(traceClass))) {}

    void add(const char* name, Form form, unsigned bits) {
        if (form == Form::text) {
            append(name, owned(bt_field_class_string_create(traceClass_)));
            return;
        }
        auto number =
            owned(form == Form::signedNumber ? bt_field_class_integer_signed_create(traceClass_)
                                             : bt_field_class_integer_unsigned_create(traceClass_));
        bt_field_class_integer_set_field_value_range(number.get(), bits);
        if (form == Form::hexadecimal) {
            bt_field_class_integer_set_preferred_display_base(
                number.get(), BT_FIELD_CLASS_INTEGER_PREFERRED_DISPLAY_BASE_HEXADECIMAL);
        }
        append(name, number);
    }

    void addQualifier() {
        auto qualifier = owned(bt_field_class_enumeration_unsigned_create(traceClass_));
        bt_field_class_integer_set_field_value_range(qualifier.get(), 2);
        for (uint64_t number = 0; number < 4; ++number) {
            auto range = owned(bt_integer_range_set_unsigned_create());
            check(bt_integer_range_set_unsigned_add_range(range.get(), number, number));
            check(bt_field_class_enumeration_unsigned_add_mapping(
                qualifier.get(), kQualifiers[number], range.get()));
        }
        append("qualifier", qualifier);
    }

    bt_field_class* get() const { return structure_.get(); }

  private:
    // Names become identifiers, as CTF has no others; one that is taken gets a number.
    void append(std::string name, const Reference<bt_field_class>& field) {
        std::replace_if(
            name.begin(), name.end(),
            [](unsigned char character) {
                return !(character < 0x80 && std::isalnum(character) != 0) && character != '_';
            },
            '_');
        // A reader of CTF takes a leading underscore away.
        if (name.empty() || name.front() == '_' || std::isdigit(name.front()) != 0) {
            name.insert(0, "value");
        }
        std::string free = name;
        for (int number = 2; isTaken(free); ++number) free = name + std::to_string(number);
        check(bt_field_class_structure_append_member(structure_.get(), free.c_str(), field.get()));
    }

    bool isTaken(const std::string& name) const {
        return bt_field_class_structure_borrow_member_by_name_const(structure_.get(),
                                                                    name.c_str()) != nullptr;
    }

    bt_trace_class* traceClass_;
    Reference<bt_field_class> structure_;
};

bt_field* member(bt_field* structure, uint64_t number) {
    return bt_field_structure_borrow_member_field_by_index(structure, number);
}

void appendBytes(std::string& key, const void* bytes, size_t length) {
    key.append(static_cast<const char*>(bytes), length);
}

}  // namespace

TraceModel::TraceModel(bt_self_component* component, const std::string& name, const Clock& clock,
                       const ClockOptions& options, int64_t earliest)
    : traceClass_(owned(bt_trace_class_create(component))),
      clockClass_(owned(bt_clock_class_create(component))),
      streamClass_(owned(bt_stream_class_create(traceClass_.get()))) {
    setClock(clock, options, earliest);
    bt_stream_class* streams = streamClass_.get();
    check(bt_stream_class_set_default_clock_class(streams, clockClass_.get()));
    bt_stream_class_set_supports_packets(streams, BT_TRUE, BT_TRUE, BT_TRUE);
    bt_stream_class_set_supports_discarded_events(streams, BT_TRUE, BT_TRUE);
    setContext();
    trace_ = owned(bt_trace_create(traceClass_.get()));
    check(bt_trace_set_name(trace_.get(), name.c_str()));
    check(bt_trace_set_environment_entry_string(trace_.get(), "tracer_name", "sonaprobe"));
    stream_ = owned(bt_stream_create(streams, trace_.get()));
}

void TraceModel::setClock(const Clock& clock, const ClockOptions& options, int64_t earliest) {
    check(bt_clock_class_set_name(clockClass_.get(), "sonaprobe"));
    check(bt_clock_class_set_description(clockClass_.get(), "The trace clock of the drivers"));
    bt_clock_class_set_frequency(clockClass_.get(), clock.frequency);
    bt_clock_class_set_origin_is_unix_epoch(clockClass_.get(), options.isUnixEpoch);
    Wide zero =
        Wide{clock.zero} + Wide{options.offsetSeconds} * kSecond + options.offsetNanoseconds;
    const auto setZero = [&] {
        const Wide seconds = zero / kSecond - (zero % kSecond < 0 ? 1 : 0);
        const Wide cycles = (zero - seconds * kSecond) * clock.frequency / kSecond;
        bt_clock_class_set_offset(clockClass_.get(), static_cast<int64_t>(seconds),
                                  static_cast<uint64_t>(cycles));
    };
    setZero();
    // Cycles are coarser than nanoseconds, and Babeltrace counts them in doubles.
    while (nanoseconds(0) < earliest) {
        zero += earliest - nanoseconds(0);
        setZero();
    }
}

int64_t TraceModel::nanoseconds(uint64_t cycle) const {
    int64_t time = 0;
    check(bt_clock_class_cycles_to_ns_from_origin(clockClass_.get(), cycle, &time));
    return time;
}

void TraceModel::setContext() {
    Fields context(traceClass_.get());
    context.addQualifier();
    for (const ContextField& field : kContext) {
        context.add(field.name, field.isHexadecimal ? Form::hexadecimal : Form::number, field.bits);
    }
    check(bt_stream_class_set_event_common_context_field_class(streamClass_.get(), context.get()));
}

Reference<bt_event_class> TraceModel::newClassOf(const sonaprobe_event* event, bool isNamed) {
    auto made = owned(bt_event_class_create(streamClass_.get()));
    check(bt_event_class_set_name(made.get(), isNamed ? nameOf(event).c_str() : "other codes"));
    Fields payload(traceClass_.get());
    if (hasText(event)) {
        payload.add("text", Form::text, 0);
        for (size_t number = 0; number < sonaprobe_event_value_count(event); ++number) {
            const sonaprobe_value* value = sonaprobe_event_value(event, number);
            payload.add(sonaprobe_value_name(value), formOf(value), bitsOf(value));
        }
    } else {
        for (unsigned number = 1; number <= kArguments; ++number) {
            payload.add(("arg" + std::to_string(number)).c_str(), Form::hexadecimal, 64);
        }
    }
    check(bt_event_class_set_payload_field_class(made.get(), payload.get()));
    return made;
}

// The key tells classes apart: the code, its names, whether there is a text, and each value's name
// and form.
const bt_event_class* TraceModel::classOf(const sonaprobe_event* event) {
    const uint32_t code = sonaprobe_event_code(event);
    const bool isKnown = sonaprobe_event_outcome(event) != SONAPROBE_OUTCOME_UNKNOWN;
    const bool isNamed = isKnown || classes_.size() < kMostClasses;
    key_.clear();
    appendBytes(key_, &code, sizeof code);
    key_.append(1, hasText(event) ? 't' : 'a');
    key_.append(sonaprobe_event_group(event)).append(1, '\0');
    key_.append(sonaprobe_event_method(event)).append(1, '\0');
    const size_t values = sonaprobe_event_value_count(event);
    for (size_t number = 0; number < values; ++number) {
        const sonaprobe_value* value = sonaprobe_event_value(event, number);
        const int form[] = {static_cast<int>(formOf(value)), static_cast<int>(bitsOf(value))};
        key_.append(sonaprobe_value_name(value)).append(1, '\0');
        appendBytes(key_, form, sizeof form);
    }
    auto found = classes_.find(key_);
    if (found == classes_.end() && !isNamed) found = classes_.find(key_ = "others");
    if (found == classes_.end()) {
        found = classes_.emplace(key_, newClassOf(event, isNamed)).first;
    }
    return found->second.get();
}

void TraceModel::fillContext(bt_field* context, const sonaprobe_event* event) {
    const uint64_t values[] = {sonaprobe_event_qualifier(event),  sonaprobe_event_thread(event),
                               sonaprobe_event_cpu(event),        sonaprobe_event_object(event),
                               sonaprobe_event_is_failure(event), sonaprobe_event_code(event),
                               sonaprobe_event_slot(event)};
    for (uint64_t number = 0; number < std::size(values); ++number) {
        bt_field_integer_unsigned_set_value(member(context, number), values[number]);
    }
}

void TraceModel::fillText(bt_field* field, const char* text, size_t length) {
    text_.clear();
    appendPrintable(text_, text, length);
    check(bt_field_string_set_value(field, text_.c_str()));
}

void TraceModel::fillPayload(bt_field* payload, const sonaprobe_event* event) {
    if (!hasText(event)) {
        for (unsigned number = 1; number <= kArguments; ++number) {
            bt_field_integer_unsigned_set_value(member(payload, number - 1),
                                                sonaprobe_event_argument(event, number));
        }
        return;
    }
    size_t length = 0;
    const char* text = sonaprobe_event_text(event, &length);
    fillText(member(payload, 0), text, length);
    const size_t values = sonaprobe_event_value_count(event);
    for (size_t number = 0; number < values; ++number) {
        const sonaprobe_value* value = sonaprobe_event_value(event, number);
        bt_field* field = member(payload, 1 + number);
        switch (formOf(value)) {
            case Form::signedNumber:
                bt_field_integer_signed_set_value(field, static_cast<int64_t>(numberOf(value)));
                break;
            case Form::number:
            case Form::hexadecimal:
                bt_field_integer_unsigned_set_value(field, numberOf(value));
                break;
            case Form::text:
                text = sonaprobe_value_text(value, &length);
                fillText(field, text, length);
                break;
        }
    }
}

Reference<bt_message> TraceModel::messageOf(const sonaprobe_event* event, uint64_t cycle,
                                            const bt_packet* packet,
                                            bt_self_message_iterator* iterator) {
    auto message = owned(bt_message_event_create_with_packet_and_default_clock_snapshot(
        iterator, classOf(event), packet, cycle));
    bt_event* made = bt_message_event_borrow_event(message.get());
    fillContext(bt_event_borrow_common_context_field(made), event);
    fillPayload(bt_event_borrow_payload_field(made), event);
    return message;
}

}  // namespace sonaprobe::plugins
