// What the row vocabulary refuses, each refusal by its message. A case is compiled twice: with its
// fault it must not compile, and the compiler must show that message and no other; repaired it
// must.

#include "events/row_vocabulary.h"

#ifdef REPAIRED
#define FAULT(faulty, repaired) repaired
#else
#define FAULT(faulty, repaired) faulty
#endif

namespace sonaprobe::rows {

// Slices and readings.

#ifdef HALF_OF_A_HALF  // lo(), hi() and byte() take a whole argument word
constexpr Entry kRow = start("channelID: %d", FAULT(lo(hi(a2)), lo(a2)));
#endif

#ifdef BYTE_OF_A_HALF  // lo(), hi() and byte() take a whole argument word
constexpr Entry kRow = start("channelID: %d", byte(0, FAULT(lo(a2), a2)));
#endif

#ifdef HALF_OF_A_READING  // lo(), hi() and byte() take a whole argument word
constexpr Entry kRow = start("running: %s", FAULT(lo(boolean(a2)), boolean(lo(a2))));
#endif

#ifdef NINTH_BYTE  // a word has bytes 0 to 7
constexpr Entry kRow = start("channelID: %d", byte(FAULT(8, 7), a2));
#endif

#ifdef READING_OF_A_READING  // a reading of a reading
constexpr Entry kRow = start("running: %s", FAULT(yesNo(boolean(a2)), yesNo(a2)));
#endif

#ifdef WORD_OF_33_CHARACTERS  // a word of more than 32 characters
#define WORD_32 "a word of thirty-two characters."
constexpr Entry kRow = start("word: %s", either(a2, FAULT(WORD_32 ".", WORD_32), "short"));
#endif

#ifdef SECONDS_TO_A_READING  // a reading of a reading
constexpr Entry kRow = start("slept: %llu s", seconds(a2, FAULT(nanos(a3), a3)));
#endif

// Names of values.

#ifdef TWO_VALUES_OF_ONE_NAME  // a text with two values of one name
constexpr Entry kRow =
    start("nodeID: %d nodeID: %d", lo(a2), FAULT(lo(a3), named("old nodeID", lo(a3))));
#endif

#ifdef VALUE_WITHOUT_NAME  // a value without a name
constexpr Entry kRow = start("waiting for %d lists", FAULT(lo(a2), named("lists", lo(a2))));
#endif

#ifdef NAME_OF_THREE_WORDS  // a value without a name
constexpr Entry kRow = start(FAULT("last queued frame: %lld", "last frame: %lld"), a2);
#endif

#ifdef EMPTY_NAME  // an empty name
constexpr Entry kRow = start("node %d", named(FAULT("", "node"), lo(a2)));
#endif

// Conversions and what fills them.

#ifdef UNKNOWN_CONVERSION  // an unknown conversion
constexpr Entry kRow = start(FAULT("offset: %hd", "offset: %d"), lo(a2));
#endif

#ifdef WORDS_IN_A_NUMBER  // boolean(), yesNo() and either() fill %s
constexpr Entry kRow = start(FAULT("running: %d", "running: %s"), boolean(a2));
#endif

#ifdef TICKS_IN_A_NUMBER  // ticks() fills %f
constexpr Entry kRow = start(FAULT("time: %lld", "time: %f"), ticks(a2));
#endif

#ifdef CHARACTER_IN_A_NUMBER  // character() fills %c
constexpr Entry kRow = start(FAULT("kind: %d", "kind: %c"), character(byte(0, a2)));
#endif

#ifdef SECONDS_IN_HEXADECIMAL  // seconds() fills %llu or %lld
constexpr Entry kRow = start(FAULT("slept: %llx s", "slept: %lld s"), seconds(a2, a3));
#endif

#ifdef SECONDS_IN_32_BITS  // seconds() fills %llu or %lld
constexpr Entry kRow = start(FAULT("slept: %u s", "slept: %llu s"), seconds(a2, a3));
#endif

#ifdef TIME_WITHOUT_NANOSECONDS  // nanos() fills %d.%03d.%03d.%03d
constexpr Entry kRow = start(FAULT("time: %d.%03d.%03d", "time: %d.%03d.%03d.%03d"), nanos(a2));
#endif

#ifdef CODE_OF_THREE_CHARACTERS  // fourCC() fills %c%c%c%c
constexpr Entry kRow = start(FAULT("type: %c%c%c", "type: %c%c%c%c"), fourCC(a2));
#endif

#ifdef NUMBER_IN_WORDS  // %s takes boolean(), yesNo() or either()
constexpr Entry kRow = start("running: %s", FAULT(a2, boolean(a2)));
#endif

#ifdef NUMBER_IN_A_REAL  // %f takes ticks()
constexpr Entry kRow = start("time: %f", FAULT(a2, ticks(a2)));
#endif

#ifdef NUMBER_IN_A_CHARACTER  // %c takes character(), %c%c%c%c fourCC()
constexpr Entry kRow = start("kind: %c", FAULT(byte(0, a2), character(byte(0, a2))));
#endif

#ifdef POINTER_OF_A_HALF  // %p takes a whole argument word
constexpr Entry kRow = start("stream: %p", FAULT(lo(a2), a2));
#endif

#ifdef WORD_IN_32_BITS  // a 32-bit conversion takes lo(), hi() or byte()
constexpr Entry kRow = start("channelID: %d", FAULT(a2, lo(a2)));
#endif

// Texts.

#ifdef NO_TEXT  // an empty text
constexpr Entry kRow = start(FAULT("", "Start"));
#endif

#ifdef LINE_END  // a line end in a text
constexpr Entry kRow = start(FAULT("Start\n", "Start"));
#endif

#ifdef THIRTEEN_PIECES  // a text of too many pieces
constexpr Entry kRow = start(FAULT("%%%%%%%%%%%%%%%%%%%%%%%%%%", "%%%%%%%%%%%%%%%%%%%%%%%%"));
#endif

#ifdef LONG_STRETCH_OF_WORDS  // a text with too long a stretch of words
#define WORDS_64 "sixty-four characters, counting the blank behind the full stop. "
constexpr Entry kRow =
    start(FAULT(WORDS_64 WORDS_64 WORDS_64 WORDS_64, WORDS_64 WORDS_64 WORDS_64));
#endif

#ifdef THREE_PAIRS_OF_WORDS  // a text with too many pairs of words
constexpr Entry kRow = start("one: %s two: %s three: %s", boolean(a2), yesNo(a3),
                             FAULT(either(a4, "External", "Internal"), boolean(a4)));
#endif

#ifdef MISSING_ARGUMENT  // fewer arguments than conversions
constexpr Entry kRow = start(FAULT("nodeID: %lld power: %lld", "nodeID: %lld"), a2);
#endif

#ifdef SUPERFLUOUS_ARGUMENT  // more arguments than conversions
constexpr Entry kRow = start(FAULT("nodeID: %lld", "nodeID: %lld power: %lld"), a2, a3);
#endif

// Conditions.

#ifdef CONDITION_ON_WORDS  // a condition on a reading
constexpr Entry kRow = start(is(FAULT(boolean(a2), a2), 1), "Start");
#endif

#ifdef CONDITION_ON_A_TIME  // a condition on a reading
constexpr Entry kRow = start(nonZero(FAULT(nanos(a2), a2)), "Start");
#endif

#ifdef SELECTOR_OF_NINE_BITS  // a value that its slice cannot hold
constexpr Entry kRow = sel(FAULT(256, 255), "Start");
#endif

// Wrappers.

#ifdef VERBOSE_EVENT  // verbose() wraps a text
constexpr Entry kRow = verbose(FAULT(event(0x05245C0C, "enable"), start("Start")));
#endif

#ifdef FAILING_EVENT  // failure() wraps a text
constexpr Entry kRow = failure(FAULT(event(0x05245C0C, "enable"), other("ERROR: timed out")));
#endif

#ifdef EVENT_UNDER_A_METHOD  // under() wraps a text
constexpr Entry kRow = under("runVerb", FAULT(event(0x05245C0C, "enable"), start("Start")));
#endif

// Decoders.

#ifdef CODE_WITH_QUALIFIER  // a code with qualifier bits
constexpr Entry kRow = event(FAULT(0x05245C0D, 0x05245C0C), "enable");
#endif

#ifdef CLASS_OF_SEVEN_BITS  // an audio class id is 0 to 63
constexpr uint32_t kCodeBase = audioClass(FAULT(64, 63));
#endif

#ifdef CODE_OF_ANOTHER_CLASS  // a code of another class
constexpr Entry kRows[] = {event(FAULT(0x05246004, 0x05245C04), "enable")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 1);
#endif

#ifdef CODES_OUT_OF_ORDER  // codes out of order
constexpr Entry kRows[] = {event(0x05245C10, "enable"),
                           event(FAULT(0x05245C0C, 0x05245C14), "disable")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 2);
#endif

#ifdef CODE_TWICE  // codes out of order
constexpr Entry kRows[] = {event(0x05245C10, "enable"),
                           event(FAULT(0x05245C10, 0x05245C14), "disable")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 2);
#endif

#ifdef TEXT_OF_NO_EVENT  // a text before the first event
constexpr Entry kRows[] = {FAULT(start("Start"), event(0x05245C08, "free")),
                           event(0x05245C0C, "enable")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), FAULT(1, 2));
#endif

#ifdef SELECTOR_TWICE  // a text that an earlier one hides
constexpr Entry kRows[] = {event(0x05245C0C, "enable"), sel(1, "going to sleep"),
                           sel(FAULT(1, 0), "going to wake")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 1);
#endif

#ifdef SELECTOR_BEHIND_ANY_OTHER  // a text that an earlier one hides
constexpr Entry kRows[] = {event(0x05245C0C, "enable"), FAULT(other("waiting"), start("Start")),
                           sel(1, "going to sleep")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 1);
#endif

#ifdef VALUE_BEHIND_NOT_ZERO  // a text that an earlier one hides
constexpr Entry kRows[] = {event(0x05245C0C, "enable"), other(nonZero(a2), "waiting"),
                           value(FAULT(1, 0), "going to wake")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 1);
#endif

#ifdef TABLE_OF_65536_CHARACTERS  // a table that is too long
constexpr auto kMethod = [] {
    std::array<char, FAULT(65'536, 65'535) - 14 + 1> method{};
    std::fill_n(method.begin(), method.size() - 1, 'm');
    return method;
}();
constexpr Entry kRows[] = {event(0x05245C0C, kMethod.data())};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 1);
#endif

#ifdef NAME_WITHOUT_GROUP  // a name that lacks its group or its method
constexpr Entry kRows[] = {event(0x05245C0C, "enable")};
constexpr Decoder kDecoder = decoder<kRows, FAULT("", "OrvelHDAPath")>(audioClass(23), 1);
#endif

#ifdef NAME_WITHOUT_METHOD  // a name that lacks its group or its method
constexpr Entry kRows[] = {event(0x05245C0C, FAULT("", "enable"))};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), 1);
#endif

#ifdef MISCOUNTED_EVENTS  // a class with another number of events
constexpr Entry kRows[] = {event(0x05245C0C, "enable"), event(0x05245C10, "disable")};
constexpr Decoder kDecoder = decoder<kRows, "OrvelHDAPath">(audioClass(23), FAULT(3, 2));
#endif

}  // namespace sonaprobe::rows
