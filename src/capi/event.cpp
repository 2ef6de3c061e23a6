// The C interface: a record, what it means, and the values of its text.

#include <cstring>
#include <span>

#include "capi/handles.h"

using namespace sonaprobe;

static_assert(SONAPROBE_OUTCOME_TEXT == static_cast<int>(Outcome::text));
static_assert(SONAPROBE_OUTCOME_GATED == static_cast<int>(Outcome::gated));
static_assert(SONAPROBE_OUTCOME_SILENT == static_cast<int>(Outcome::silent));
static_assert(SONAPROBE_OUTCOME_UNKNOWN == static_cast<int>(Outcome::unknown));
static_assert(SONAPROBE_READING_SIGNED == static_cast<int>(Reading::signedDecimal));
static_assert(SONAPROBE_READING_UNSIGNED == static_cast<int>(Reading::unsignedDecimal));
static_assert(SONAPROBE_READING_HEXADECIMAL == static_cast<int>(Reading::hexadecimal));
static_assert(SONAPROBE_READING_POINTER == static_cast<int>(Reading::pointer));
static_assert(SONAPROBE_READING_WORDS == static_cast<int>(Reading::words));
static_assert(SONAPROBE_READING_NANOSECONDS == static_cast<int>(Reading::nanoseconds));
static_assert(SONAPROBE_READING_FOUR_CHARACTERS == static_cast<int>(Reading::fourCharacters));
static_assert(SONAPROBE_READING_TICKS == static_cast<int>(Reading::ticks));
static_assert(SONAPROBE_READING_CHARACTER == static_cast<int>(Reading::character));
static_assert(SONAPROBE_READING_SECONDS == static_cast<int>(Reading::seconds));

namespace {

// Ends a text that was put at `begin`, and gives its length.
const char* endText(char* begin, char* end, size_t* length) {
    *end = '\0';
    if (length != nullptr) *length = static_cast<size_t>(end - begin);
    return begin;
}

// The place of a value among those that the event hands out is its piece's among the text's.
const sonaprobe_value* handOut(const sonaprobe_event* event, const Piece& piece) {
    const auto place = static_cast<size_t>(&piece - piecesOf(event->meaning).data());
    sonaprobe_value& value = event->values[place];
    value.event = event;
    value.piece = &piece;
    return &value;
}

Value valueOf(const sonaprobe_value* value) {
    return valueOf(value->event->meaning, *value->piece);
}

}  // namespace

uint64_t sonaprobe_event_slot(const sonaprobe_event* event) { return event->slot; }

void sonaprobe_event_keep(const sonaprobe_event* event, sonaprobe_record* record) {
    static_assert(sizeof record->words == sizeof event->record);
    std::memcpy(record->words, &event->record, sizeof record->words);
    record->slot = event->slot;
    record->ticks_per_microsecond = event->ticksPerMicrosecond;
}

uint64_t sonaprobe_event_time(const sonaprobe_event* event) { return event->record.timestamp; }

double sonaprobe_event_ticks_per_microsecond(const sonaprobe_event* event) {
    return event->ticksPerMicrosecond;
}

uint32_t sonaprobe_event_code(const sonaprobe_event* event) {
    return codeOf(event->record.debugid);
}

sonaprobe_qualifier sonaprobe_event_qualifier(const sonaprobe_event* event) {
    return static_cast<sonaprobe_qualifier>(qualifierOf(event->record.debugid));
}

uint64_t sonaprobe_event_thread(const sonaprobe_event* event) { return event->record.arg5; }

uint32_t sonaprobe_event_cpu(const sonaprobe_event* event) { return event->record.cpuid; }

uint64_t sonaprobe_event_argument(const sonaprobe_event* event, unsigned number) {
    if (number < 1 || number > 5) return 0;
    return argumentOf(event->record, {.word = static_cast<uint8_t>(number)});
}

bool sonaprobe_event_has_object(const sonaprobe_event* event) {
    return event->meaning.event != nullptr && event->meaning.decoder->hasObject;
}

uint64_t sonaprobe_event_object(const sonaprobe_event* event) {
    return sonaprobe_event_has_object(event) ? event->record.arg1 : 0;
}

sonaprobe_outcome sonaprobe_event_outcome(const sonaprobe_event* event) {
    return static_cast<sonaprobe_outcome>(event->meaning.outcome);
}

bool sonaprobe_event_is_failure(const sonaprobe_event* event) { return isFailure(event->meaning); }

const char* sonaprobe_event_group(const sonaprobe_event* event) {
    return event->group.keep(groupOf(event->meaning));
}

const char* sonaprobe_event_method(const sonaprobe_event* event) {
    return event->method.keep(methodOf(event->meaning));
}

const char* sonaprobe_event_text(const sonaprobe_event* event, size_t* length) {
    char* end = event->text;
    if (event->meaning.text != nullptr) {
        end = putLogText(end, event->meaning, event->ticksPerMicrosecond);
    }
    return endText(event->text, end, length);
}

size_t sonaprobe_event_value_count(const sonaprobe_event* event) {
    size_t count = 0;
    for (const Piece& piece : piecesOf(event->meaning)) {
        if (piece.reading != Reading::nothing) ++count;
    }
    return count;
}

const sonaprobe_value* sonaprobe_event_value(const sonaprobe_event* event, size_t number) {
    for (const Piece& piece : piecesOf(event->meaning)) {
        if (piece.reading != Reading::nothing && number-- == 0) return handOut(event, piece);
    }
    return nullptr;
}

const sonaprobe_value* sonaprobe_event_value_named(const sonaprobe_event* event, const char* name) {
    for (const Piece& piece : piecesOf(event->meaning)) {
        if (piece.reading != Reading::nothing && event->meaning.decoder->nameOf(piece) == name) {
            return handOut(event, piece);
        }
    }
    return nullptr;
}

const char* sonaprobe_value_name(const sonaprobe_value* value) {
    return value->name.keep(valueOf(value).name);
}

sonaprobe_reading sonaprobe_value_reading(const sonaprobe_value* value) {
    return static_cast<sonaprobe_reading>(valueOf(value).reading);
}

unsigned sonaprobe_value_bits(const sonaprobe_value* value) { return valueOf(value).bits; }

uint64_t sonaprobe_value_word(const sonaprobe_value* value) { return valueOf(value).word; }

bool sonaprobe_value_is_signed(const sonaprobe_value* value) {
    return value->piece->reading == Reading::signedDecimal;
}

bool sonaprobe_value_is_result(const sonaprobe_value* value) { return value->piece->isResult; }

const char* sonaprobe_value_text(const sonaprobe_value* value, size_t* length) {
    const sonaprobe_event& event = *value->event;
    char* const end =
        putValue(value->text, event.meaning, *value->piece, event.ticksPerMicrosecond);
    return endText(value->text, end, length);
}
