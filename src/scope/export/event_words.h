// What an event says, as data: its names, its text, its values.

#pragma once

#include <array>
#include <string>
#include <string_view>

#include "analysis/event_names.h"
#include "events/log_text.h"
#include "scope/escape.h"
#include "scope/event_text.h"

namespace sonaprobe::scope {

// Escaped.
struct EventNames {
    std::string_view driver;  // empty where no decoder knows the event
    std::string_view method;  // "code 0x01400004" there, or the name that a file gives
};

// Of any event; what it gives holds until it is asked again. One of a kind may be large.
class EventWords {
  public:
    explicit EventWords(const CodeNames& names) : names_(&names) {}

    // As the record's own line names it.
    EventNames namesOf(const Event& event) {
        if (event.outcome == Outcome::unknown) return given(event.record->debugid);
        return {groupOf(event), methodOf(event)};
    }

    // As statistics name it.
    EventNames namesOf(uint32_t code) {
        const EventName name = nameOf(code);
        if (name.full.empty()) return given(code);
        return {name.group, name.method};
    }

    // Empty where the event has no text for its record.
    std::string_view textOf(const Event& event, uint64_t ticksPerMicrosecond) {
        if (event.text == nullptr) return {};
        const auto ticks = static_cast<double>(ticksPerMicrosecond);
        return escapedUpTo(putLogText(room_.data(), event, ticks), event);
    }

    // A value that is no number.
    std::string_view textOf(const Event& event, const Piece& piece, uint64_t ticksPerMicrosecond) {
        const auto ticks = static_cast<double>(ticksPerMicrosecond);
        return escapedUpTo(putValue(room_.data(), event, piece, ticks), event);
    }

  private:
    EventNames given(uint32_t code) {
        escaped_ = eventText(code, *names_);
        return {{}, escaped_};
    }

    std::string_view escapedUpTo(const char* end, const Event& event) {
        const std::string_view text(room_.data(), end);
        if ((event.text->holds & kHoldsAnyByte) == 0 || isPrintable(text)) return text;
        escaped_ = escaped(text);
        return escaped_;
    }

    const CodeNames* names_;
    std::array<char, kLogTextRoom> room_{};
    std::string escaped_;
};

// How programs are given a value: what has 64 bits is a text to them, since many of them count in
// doubles.
enum class ValueForm : uint8_t { number, decimalText, word, text };

inline ValueForm formOf(const Value& value) {
    switch (value.reading) {
        case Reading::signedDecimal:
        case Reading::unsignedDecimal:
            return value.bits < 64 ? ValueForm::number : ValueForm::decimalText;
        case Reading::hexadecimal: return value.bits < 64 ? ValueForm::number : ValueForm::word;
        case Reading::pointer: return ValueForm::word;
        default: return ValueForm::text;
    }
}

}  // namespace sonaprobe::scope
