/* libsonaprobe: reads raw files of audio driver traces and says what their records mean, as data or
 * as the lines that sonaprobe prints.
 *
 * Errors    A function that can fail returns an int: a negative errno value where it has failed,
 *           -ENOMEM for want of memory among them. strerror(-result) tells it. The library prints
 *           nothing, ends no program and takes no signals.
 * Threads   Objects share nothing. Readers (with their events and values) and printers may be used
 *           side by side in any number of threads, each of them by one thread at a time. Names may
 *           be used by several at once.
 * Texts     end with a zero byte. Those with a length may hold zero bytes of their own, where a
 *           driver has given one as a character.
 * Pointers  No argument may be null but where its function says so.
 */

#ifndef SONAPROBE_SONAPROBE_H
#define SONAPROBE_SONAPROBE_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

typedef struct sonaprobe_reader sonaprobe_reader;
typedef struct sonaprobe_event sonaprobe_event;
typedef struct sonaprobe_value sonaprobe_value;
typedef struct sonaprobe_printer sonaprobe_printer;
typedef struct sonaprobe_names sonaprobe_names;
typedef struct sonaprobe_record sonaprobe_record;

/* The version of the library, as "100.45". */
const char* sonaprobe_version(void);

/* ---- Reading a raw file: slots of 64 bytes in the byte order of the machine. ---- */

/* Opens a file, pipe or device, which is read once, from its start. Opening a pipe waits for its
 * writer. On success 0, and *reader is to be closed. */
int sonaprobe_open_file(sonaprobe_reader** reader, const char* path);

/* Reads an open descriptor from where it stands. It stays the caller's and is not closed. */
int sonaprobe_open_descriptor(sonaprobe_reader** reader, int descriptor);

/* Reads `length` bytes, which stay the caller's and must not change until the reader is closed.
 * They need no alignment; null will do for no bytes. */
int sonaprobe_open_memory(sonaprobe_reader** reader, const void* bytes, size_t length);

/* Closes a reader, and with it the event that it gave last. Null is passed over. */
void sonaprobe_close(sonaprobe_reader* reader);

/* Goes on to the next record: 1, and *event is its event; 0 at the end; else the error of a read.
 * Divisor slots are taken over and invalid slots passed over. The event belongs to the reader and
 * holds until the next call. After the end or an error the call may be repeated: a file may have
 * grown, a descriptor may be ready now. */
int sonaprobe_next(sonaprobe_reader* reader, const sonaprobe_event** event);

/* At the end: how many bytes there are of a last slot that is not whole, 0 to 63. */
size_t sonaprobe_cut_bytes(const sonaprobe_reader* reader);

/* How many invalid slots have been passed over so far: each is a record that was lost. */
uint64_t sonaprobe_invalid_slots(const sonaprobe_reader* reader);

/* The trace clock of the records to come, until a divisor slot tells another: ticks a microsecond,
 * 1000 at first. Any number will do. */
void sonaprobe_set_ticks_per_microsecond(sonaprobe_reader* reader, double ticks);

/* ---- The record of an event. ---- */

/* The number of the event's slot, from 0 where the reader began; all slots count. */
uint64_t sonaprobe_event_slot(const sonaprobe_event* event);

/* Ticks of the trace clock, from 0 to 2^64 - 1. */
uint64_t sonaprobe_event_time(const sonaprobe_event* event);

/* The divisor in force at the event: ticks a microsecond. */
double sonaprobe_event_ticks_per_microsecond(const sonaprobe_event* event);

/* The event code, bits 0 and 1 clear. */
uint32_t sonaprobe_event_code(const sonaprobe_event* event);

typedef enum sonaprobe_qualifier {
    SONAPROBE_QUALIFIER_NONE = 0,
    SONAPROBE_QUALIFIER_START = 1,
    SONAPROBE_QUALIFIER_END = 2,
    SONAPROBE_QUALIFIER_BOTH = 3
} sonaprobe_qualifier;

sonaprobe_qualifier sonaprobe_event_qualifier(const sonaprobe_event* event);

/* The thread's id. */
uint64_t sonaprobe_event_thread(const sonaprobe_event* event);

/* The processor's number. */
uint32_t sonaprobe_event_cpu(const sonaprobe_event* event);

/* Argument word `number`, 1 to 5; 0 for any other number. */
uint64_t sonaprobe_event_argument(const sonaprobe_event* event, unsigned number);

/* Whether the driver names an object, and the object's address; 0 where it does not. */
bool sonaprobe_event_has_object(const sonaprobe_event* event);
uint64_t sonaprobe_event_object(const sonaprobe_event* event);

/* ---- Events that are kept, to be put in order or to be looked at again. ---- */

/* What makes an event again. It may be copied, and outlives its reader. */
struct sonaprobe_record {
    uint64_t words[8]; /* the slot; all of them are 0 where nothing was written */
    uint64_t slot;
    double ticks_per_microsecond;
};

void sonaprobe_event_keep(const sonaprobe_event* event, sonaprobe_record* record);

/* The event of a kept record, whichever reader it came from. It takes the place of the event that
 * the reader gave last; what the reader gives next stays the same. */
const sonaprobe_event* sonaprobe_event_again(sonaprobe_reader* reader,
                                             const sonaprobe_record* record);

/* ---- What the event means. ---- */

typedef enum sonaprobe_outcome {
    SONAPROBE_OUTCOME_TEXT = 0, /* the event has a text */
    SONAPROBE_OUTCOME_GATED =
        1, /* it has one, that lines show under SONAPROBE_LINE_VERBOSE alone */
    SONAPROBE_OUTCOME_SILENT = 2, /* a known event without a text */
    SONAPROBE_OUTCOME_UNKNOWN = 3 /* no driver is known that has the event */
} sonaprobe_outcome;

sonaprobe_outcome sonaprobe_event_outcome(const sonaprobe_event* event);

/* Whether the event tells of a failure: by a result that is not 0, or in its words. */
bool sonaprobe_event_is_failure(const sonaprobe_event* event);

/* The driver's part and its method, as "OrvelHDAPath" and "enable"; empty for an unknown event.
 * Both hold as long as the event. */
const char* sonaprobe_event_group(const sonaprobe_event* event);
const char* sonaprobe_event_method(const sonaprobe_event* event);

/* The event's text, empty where it has none; it holds as long as the event. `length` may be null,
 * else it takes the text's length. */
const char* sonaprobe_event_text(const sonaprobe_event* event, size_t* length);

/* ---- The values of an event's text. ---- */

/* How many values the text has: 0 to 12. */
size_t sonaprobe_event_value_count(const sonaprobe_event* event);

/* A value by its number, from 0 and in the text's order, or by its name; null where there is none.
 * It holds as long as the event. */
const sonaprobe_value* sonaprobe_event_value(const sonaprobe_event* event, size_t number);
const sonaprobe_value* sonaprobe_event_value_named(const sonaprobe_event* event, const char* name);

/* The value's name, as "pin nodeID", which no other value of the text has. It holds as long as the
 * event. */
const char* sonaprobe_value_name(const sonaprobe_value* value);

/* How a text shows a value. Later versions may add readings. */
typedef enum sonaprobe_reading {
    SONAPROBE_READING_SIGNED = 1,
    SONAPROBE_READING_UNSIGNED = 2,
    SONAPROBE_READING_HEXADECIMAL = 3,
    SONAPROBE_READING_POINTER = 4,
    SONAPROBE_READING_WORDS = 5,           /* one of two words: the second for 0 */
    SONAPROBE_READING_NANOSECONDS = 6,     /* seconds.milliseconds.microseconds.nanoseconds */
    SONAPROBE_READING_FOUR_CHARACTERS = 7, /* bits 24 to 31 are the first character */
    SONAPROBE_READING_TICKS = 8,           /* microseconds, of the 24 MHz clock of a device */
    SONAPROBE_READING_CHARACTER = 9,
    SONAPROBE_READING_SECONDS = 10 /* whole seconds between two stamps; the word is the earlier */
} sonaprobe_reading;

sonaprobe_reading sonaprobe_value_reading(const sonaprobe_value* value);

/* How many bits of an argument word the value takes: 8, 32 or 64. */
unsigned sonaprobe_value_bits(const sonaprobe_value* value);

/* The value's bits, sign-extended to 64 where it is signed, which (int64_t) then reads. */
uint64_t sonaprobe_value_word(const sonaprobe_value* value);
bool sonaprobe_value_is_signed(const sonaprobe_value* value);

/* Whether the value is the result of a call: 0 is success. */
bool sonaprobe_value_is_result(const sonaprobe_value* value);

/* The value as it stands in the event's text; it holds as long as the event. `length` may be null,
 * else it takes the text's length. */
const char* sonaprobe_value_text(const sonaprobe_value* value, size_t* length);

/* ---- Lines, as sonaprobe prints them. ---- */

/* A printer of the lines of one trace, with all its options at what sonaprobe has without options.
 * On success 0, and *printer is to be closed. */
int sonaprobe_open_printer(sonaprobe_printer** printer);

/* Closes a printer, and with it the line that it gave last. Null is passed over. */
void sonaprobe_close_printer(sonaprobe_printer* printer);

/* Each is switched off by 0 and on by 1. Later versions may add options. */
typedef enum sonaprobe_line_option {
    SONAPROBE_LINE_TIME = 0, /* on; takes a sonaprobe_time */
    SONAPROBE_LINE_CPU = 1,
    SONAPROBE_LINE_THREAD = 2, /* on */
    SONAPROBE_LINE_CODE = 3,
    SONAPROBE_LINE_INDENTATION = 4, /* on */
    SONAPROBE_LINE_GROUP = 5,       /* on */
    SONAPROBE_LINE_METHOD = 6,      /* on */
    SONAPROBE_LINE_PADDING = 7,     /* on: texts stand in a column */
    SONAPROBE_LINE_OBJECT = 8,      /* on */
    SONAPROBE_LINE_BASIC = 9,       /* the raw words of every record, undecoded */
    SONAPROBE_LINE_ALL_CODES = 10,  /* lines for codes of other kinds than audio too */
    SONAPROBE_LINE_AUDIO_SERVER = 11,
    SONAPROBE_LINE_VERBOSE = 12
} sonaprobe_line_option;

/* What stands in the time column. */
typedef enum sonaprobe_time {
    SONAPROBE_TIME_NONE = 0,
    SONAPROBE_TIME_KERNEL =
        1,                   /* seconds within the minute and milliseconds, a point, microseconds */
    SONAPROBE_TIME_LOCAL = 2 /* when the line is made, microseconds, those since the last line */
} sonaprobe_time;

/* Sets an option. -EINVAL where it is unknown or has no such value; -EBUSY after the first line. */
int sonaprobe_printer_set(sonaprobe_printer* printer, sonaprobe_line_option option, int value);

/* Leaves out the audio class `id`, or all that were not given to the second, which outweighs the
 * first. A class id is 0 to 63; -EINVAL for any other; -EBUSY after the first line. */
int sonaprobe_printer_filter_out(sonaprobe_printer* printer, unsigned id);
int sonaprobe_printer_filter_all_except(sonaprobe_printer* printer, unsigned id);

/* Gives names to codes that no driver is known for. The names outlive the printer; null takes them
 * away. -EBUSY after the first line. */
int sonaprobe_printer_set_names(sonaprobe_printer* printer, const sonaprobe_names* names);

/* The event's line, without line end: 1, and *line is the line, which holds until the printer's
 * next call; 0 where the event has none. `length` may be null, else it takes the line's length.
 * Events are to come in their order: indentation and the time since the last line go on from call
 * to call. */
int sonaprobe_print(sonaprobe_printer* printer, const sonaprobe_event* event, const char** line,
                    size_t* length);

/* Forgets all open starts, as after records were lost: the next line stands at the left. */
void sonaprobe_printer_reset_indentation(sonaprobe_printer* printer);

/* ---- Names of codes. ---- */

/* Reads a code-name file: a code a line, blanks or tabs, its name. On success 0, and *names is to
 * be closed. */
int sonaprobe_open_names(sonaprobe_names** names, const char* path);

/* Closes names. Null is passed over. */
void sonaprobe_close_names(sonaprobe_names* names);

/* The name of an event code, or null; it holds until the names are closed. */
const char* sonaprobe_name_of_code(const sonaprobe_names* names, uint32_t code);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif
