// The row vocabulary: how the decoder tables spell events, texts and arguments, and what the
// compiler refuses of them. For src/events/decoders/ alone.
//
//   event(code, "method")                an event; the texts that follow are its texts
//   start(...), end(...), other(...), any(...)
//                                        a text on qualifier 1, on 2, on 0 and 3, on all four
//   sel(n, ...)                          other, where the low byte of arg4 is n
//   value(n, ...)                        other, where the whole of arg2 is n
//   start(is(byte(0, a4), 2), ...), start(nonZero(a3), ...)
//                                        a text with a condition on an argument
//   verbose(...)                         a text that prints only under --verbose
//   under("OtherMethod", ...)            a text with a method of its own
//   ofGroup("OtherGroup", ...)           a text, or an event with all its texts, of another group
//   failure(...)                         a text that tells of a failure without beginning with
//                                        "ERROR: "
//
// A text is a printf format without line end and its arguments. An argument is a slice, a1 to a5,
// lo(a3), hi(a3), byte(1, a4), as it is or in one of the readings
//
//   boolean, yesNo, either(x, "External", "Internal")    %s
//   nanos                                                %d.%03d.%03d.%03d
//   fourCC                                               %c%c%c%c
//   ticks                                                %f
//   character                                            %c
//   seconds(earlier, later)                              %llu, %lld
//
// A value's name is what the text calls it: in "pin nodeID: %d" the words before the colon, back to
// a value, a mark (" - ", ",", ":", a bracket) or the "Start" or "End" that opens the text. Where
// the text has no such name, or one of more than two words, named("x", argument) gives one. A
// number called result, returnCode, returned or returning is a result: 0 is success.
//
// A table ends as a decoder: `decoder<kRows, "Group">(audioClass(23), 3)` of three events,
// `withoutObject(...)` where arg1 is no object, `silentDecoder<kRows>()`.
//
// The texts of an event are asked from the first to the last; the first whose qualifier and
// condition fit prints, and no other. An event without a fitting text is known, and silent.

#pragma once

#include <algorithm>
#include <concepts>

#include "events/decoder.h"
#include "events/log_text.h"
#include "events/number_text.h"
#include "record/trace_record.h"

namespace sonaprobe::rows {

// Not constexpr, so that calling it while compiling is an error that shows the reason.
void refuse(const char* reason);

constexpr size_t kMaxStretch = 255;  // characters before a value
constexpr size_t kMaxWordPairs = 2;

static_assert(kMaxPieces * (kMaxStretch + kMaxNumberLength) + kTextBlock <= kLogTextRoom);

// The two words of %s, as the vocabulary spells them.
struct Words {
    std::string_view notZero;
    std::string_view zero;

    constexpr bool operator==(const Words&) const = default;
};

// A row as the vocabulary spells it, with room for the longest text. The characters and pieces of
// a whole table are packed together when it becomes a decoder.
struct Entry {
    Row row;
    std::string_view group;
    std::string_view method;
    std::string_view text;
    uint8_t pieceCount = 0;
    uint8_t wordPairCount = 0;
    std::array<Piece, kMaxPieces> pieces{};
    std::array<std::string_view, kMaxPieces> names{};  // empty where the piece has no value
    std::array<Words, kMaxWordPairs> wordPairs{};
};

struct Argument {
    Slice slice{1};
    Reading reading = Reading::nothing;  // nothing: as the conversion says
    Slice later{1};
    Words words{};
    std::string_view name{};  // empty: as the text calls it
};

constexpr Argument a1{{1}};
constexpr Argument a2{{2}};
constexpr Argument a3{{3}};
constexpr Argument a4{{4}};
constexpr Argument a5{{5}};

consteval Argument cut(Argument whole, unsigned dropHigh, unsigned dropLow) {
    if (whole.slice.dropLow != 0 || whole.reading != Reading::nothing) {
        refuse("lo(), hi() and byte() take a whole argument word");
    }
    whole.slice.dropHigh = static_cast<uint8_t>(dropHigh);
    whole.slice.dropLow = static_cast<uint8_t>(dropLow);
    return whole;
}

consteval Argument lo(Argument whole) { return cut(whole, 32, 32); }
consteval Argument hi(Argument whole) { return cut(whole, 0, 32); }

// Byte n of a word, 0 the lowest, 7 the highest.
consteval Argument byte(unsigned n, Argument whole) {
    if (n > 7) refuse("a word has bytes 0 to 7");
    return cut(whole, 56 - 8 * n, 56);
}

consteval Argument read(Argument argument, Reading reading) {
    if (argument.reading != Reading::nothing) refuse("a reading of a reading");
    argument.reading = reading;
    return argument;
}

consteval Argument either(Argument argument, const char* notZero, const char* zero) {
    argument = read(argument, Reading::words);
    argument.words = {notZero, zero};
    if (std::max(argument.words.notZero.size(), argument.words.zero.size()) > kMaxNumberLength) {
        refuse("a word of more than 32 characters");
    }
    return argument;
}

consteval Argument boolean(Argument argument) { return either(argument, "true", "false"); }
consteval Argument yesNo(Argument argument) { return either(argument, "yes", "no"); }
consteval Argument nanos(Argument argument) { return read(argument, Reading::nanoseconds); }
consteval Argument fourCC(Argument argument) { return read(argument, Reading::fourCharacters); }
consteval Argument ticks(Argument argument) { return read(argument, Reading::ticks); }
consteval Argument character(Argument argument) { return read(argument, Reading::character); }

// Whole seconds from one trace clock stamp to another.
consteval Argument seconds(Argument earlier, Argument later) {
    if (later.reading != Reading::nothing) refuse("a reading of a reading");
    earlier = read(earlier, Reading::seconds);
    earlier.later = later.slice;
    return earlier;
}

// An argument whose value has a name of its own.
consteval Argument named(const char* name, Argument argument) {
    argument.name = name;
    if (argument.name.empty()) refuse("an empty name");
    return argument;
}

consteval Condition is(Argument argument, uint64_t value) {
    if (argument.reading != Reading::nothing) refuse("a condition on a reading");
    if (argument.slice.bits() < 64 && value >> argument.slice.bits() != 0) {
        refuse("a value that its slice cannot hold");
    }
    return {Test::equals, argument.slice, value};
}

consteval Condition nonZero(Argument argument) {
    if (argument.reading != Reading::nothing) refuse("a condition on a reading");
    return {Test::notZero, argument.slice, 0};
}

// Whether `text` goes on with the conversions of `pattern`.
consteval bool goesOnWith(std::string_view text, std::string_view pattern) {
    return text.substr(0, pattern.size()) == pattern;
}

// The piece that prints `argument` through the conversion at the start of `text`, and how many
// characters of the text that takes.
struct Fitted {
    Piece piece;
    size_t length = 0;
};

consteval Fitted fitArgument(std::string_view text, const Argument& argument) {
    const Conversion conversion = readConversion(text);
    if (conversion.kind == ConversionKind::unknown) refuse("an unknown conversion");

    Fitted fitted;
    Piece& piece = fitted.piece;
    fitted.length = conversion.length;
    piece.reading = argument.reading;
    piece.slice = argument.slice;
    piece.later = argument.later;
    piece.zeroFill = conversion.zeroFill;
    piece.alternate = conversion.alternate;
    piece.width = conversion.width;

    const unsigned bits = argument.slice.bits();
    const auto expect = [&](ConversionKind kind, const char* reason) {
        if (conversion.kind != kind) refuse(reason);
    };
    switch (argument.reading) {
        case Reading::words:
            expect(ConversionKind::string, "boolean(), yesNo() and either() fill %s");
            return fitted;
        case Reading::ticks: expect(ConversionKind::real, "ticks() fills %f"); return fitted;
        case Reading::character:
            expect(ConversionKind::character, "character() fills %c");
            return fitted;
        case Reading::seconds:
            if ((conversion.kind != ConversionKind::unsignedDecimal &&
                 conversion.kind != ConversionKind::signedDecimal) ||
                !conversion.wide || conversion.width != 0) {
                refuse("seconds() fills %llu or %lld");
            }
            return fitted;
        case Reading::nanoseconds: {
            constexpr std::string_view kPattern = "%d.%03d.%03d.%03d";
            if (!goesOnWith(text, kPattern)) refuse("nanos() fills %d.%03d.%03d.%03d");
            fitted.length = kPattern.size();
            piece.width = 0;
            return fitted;
        }
        case Reading::fourCharacters: {
            constexpr std::string_view kPattern = "%c%c%c%c";
            if (!goesOnWith(text, kPattern)) refuse("fourCC() fills %c%c%c%c");
            fitted.length = kPattern.size();
            return fitted;
        }
        default: break;
    }

    switch (conversion.kind) {
        case ConversionKind::signedDecimal: piece.reading = Reading::signedDecimal; break;
        case ConversionKind::unsignedDecimal: piece.reading = Reading::unsignedDecimal; break;
        case ConversionKind::hexadecimal: piece.reading = Reading::hexadecimal; break;
        case ConversionKind::pointer: piece.reading = Reading::pointer; break;
        case ConversionKind::string: refuse("%s takes boolean(), yesNo() or either()"); break;
        case ConversionKind::real: refuse("%f takes ticks()"); break;
        case ConversionKind::character: refuse("%c takes character(), %c%c%c%c fourCC()"); break;
        case ConversionKind::unknown: break;
    }
    if (conversion.kind == ConversionKind::pointer) {
        if (bits != 64) refuse("%p takes a whole argument word");
    } else if (!conversion.wide && bits == 64) {
        refuse("a 32-bit conversion takes lo(), hi() or byte()");
    }
    // A byte is a count or an index; a half may be a negative number.
    piece.signExtend = piece.reading == Reading::signedDecimal && bits == 32;
    return fitted;
}

// The name that the words before a value give it, or nothing: see the top of this file.
consteval std::string_view nameBefore(std::string_view words) {
    const auto endsWith = [&](std::string_view end) {
        return words.size() >= end.size() && words.substr(words.size() - end.size()) == end;
    };
    const auto dropEnd = [&](std::string_view end) {
        if (endsWith(end)) words.remove_suffix(end.size());
    };
    dropEnd("0x");
    dropEnd(" ");
    if (!endsWith(":")) return {};
    words.remove_suffix(1);
    // "boost(mV)" is called boost, "getState()" getState.
    if (endsWith(")")) words = words.substr(0, words.rfind('('));

    for (const std::string_view mark : {" - ", "- ", ", ", ". ", ": ", "; ", "> ", "(", ")", "["}) {
        const size_t at = words.rfind(mark);
        if (at != words.npos) words.remove_prefix(at + mark.size());
    }
    for (const std::string_view opening : {"Start ", "End ", "Begin "}) {
        if (goesOnWith(words, opening)) words.remove_prefix(opening.size());
    }
    while (goesOnWith(words, " ")) words.remove_prefix(1);
    return std::ranges::count(words, ' ') < 2 ? words : std::string_view{};
}

constexpr bool isNumber(Reading reading) {
    return reading == Reading::signedDecimal || reading == Reading::unsignedDecimal ||
           reading == Reading::hexadecimal;
}

// A result's name ends with the word; "mResult" is no result of the call.
constexpr bool isResultName(std::string_view name) {
    const size_t blank = name.rfind(' ');
    if (blank != name.npos) name.remove_prefix(blank + 1);
    return name == "result" || name == "returnCode" || name == "returned" || name == "returning";
}

// What the characters of a text, of words or of a name hold.
consteval uint8_t heldBy(std::string_view characters) {
    uint8_t holds = 0;
    for (const char character : characters) {
        if (character == ',') holds |= kHoldsComma;
        if (character == '"' || character == '\\' || character == '<') holds |= kHoldsMarks;
        if (character < ' ' || character > '~') holds |= kHoldsAnyByte;
    }
    return holds;
}

// Splits a text into pieces, one argument after the other, and checks all that can be wrong.
consteval Entry textEntry(uint8_t qualifiers, Condition condition, const char* format,
                          std::span<const Argument> arguments) {
    Entry entry;
    entry.row.qualifiers = qualifiers;
    entry.row.condition = condition;
    const std::string_view text = entry.text = format;
    if (text.empty()) refuse("an empty text");
    if (goesOnWith(text, "ERROR: ")) entry.row.failure = FailureSign::words;
    entry.row.holds = heldBy(text);

    size_t literalBegin = 0;
    size_t used = 0;
    const auto add = [&](Piece piece, size_t literalEnd, std::string_view name = {}) {
        if (entry.pieceCount == kMaxPieces) refuse("a text of too many pieces");
        if (literalEnd - literalBegin > kMaxStretch)
            refuse("a text with too long a stretch of words");
        piece.literalBegin = static_cast<uint16_t>(literalBegin);
        piece.literalLength = static_cast<uint8_t>(literalEnd - literalBegin);
        piece.isResult = isResultName(name) && isNumber(piece.reading);
        if (piece.isResult && entry.row.failure == FailureSign::none) {
            entry.row.failure = FailureSign::result;
        }
        for (size_t i = 0; !name.empty() && i < entry.pieceCount; ++i) {
            if (entry.names[i] == name) refuse("a text with two values of one name");
        }
        entry.names[entry.pieceCount] = name;
        entry.pieces[entry.pieceCount++] = piece;
    };
    for (size_t at = 0; at < text.size();) {
        if (text[at] == '\n') refuse("a line end in a text");
        if (text[at] != '%') {
            ++at;
            continue;
        }
        if (goesOnWith(text.substr(at), "%%")) {
            add({}, at + 1);
            at += 2;
        } else {
            if (used == arguments.size()) refuse("fewer arguments than conversions");
            const Argument& argument = arguments[used++];
            Fitted fitted = fitArgument(text.substr(at), argument);
            if (argument.reading == Reading::character ||
                argument.reading == Reading::fourCharacters) {
                entry.row.holds |= kHoldsAnyByte;
            }
            if (argument.reading == Reading::words) {
                entry.row.holds |= heldBy(argument.words.notZero);
                entry.row.holds |= heldBy(argument.words.zero);
                size_t pair = 0;
                while (pair < entry.wordPairCount && entry.wordPairs[pair] != argument.words) {
                    ++pair;
                }
                if (pair == kMaxWordPairs) refuse("a text with too many pairs of words");
                if (pair == entry.wordPairCount) ++entry.wordPairCount;
                entry.wordPairs[pair] = argument.words;
                fitted.piece.wordPair = static_cast<uint8_t>(pair);
            }
            const std::string_view words = text.substr(literalBegin, at - literalBegin);
            const std::string_view name = argument.name.empty() ? nameBefore(words) : argument.name;
            if (name.empty()) refuse("a value without a name");
            entry.row.holds |= heldBy(name);
            add(fitted.piece, at, name);
            at += fitted.length;
        }
        literalBegin = at;
    }
    if (used < arguments.size()) refuse("more arguments than conversions");
    if (literalBegin < text.size()) add({}, text.size());
    return entry;
}

template <std::same_as<Argument>... Arguments>
consteval Entry text(uint8_t qualifiers, Condition condition, const char* format,
                     Arguments... arguments) {
    const std::array<Argument, sizeof...(arguments)> list{arguments...};
    return textEntry(qualifiers, condition, format, list);
}

consteval Entry start(const char* format, std::same_as<Argument> auto... arguments) {
    return text(kOnStart, {}, format, arguments...);
}
consteval Entry start(Condition condition, const char* format,
                      std::same_as<Argument> auto... arguments) {
    return text(kOnStart, condition, format, arguments...);
}

consteval Entry end(const char* format, std::same_as<Argument> auto... arguments) {
    return text(kOnEnd, {}, format, arguments...);
}
consteval Entry end(Condition condition, const char* format,
                    std::same_as<Argument> auto... arguments) {
    return text(kOnEnd, condition, format, arguments...);
}

consteval Entry other(const char* format, std::same_as<Argument> auto... arguments) {
    return text(kOnOther, {}, format, arguments...);
}
consteval Entry other(Condition condition, const char* format,
                      std::same_as<Argument> auto... arguments) {
    return text(kOnOther, condition, format, arguments...);
}

consteval Entry any(const char* format, std::same_as<Argument> auto... arguments) {
    return text(kOnAny, {}, format, arguments...);
}
consteval Entry any(Condition condition, const char* format,
                    std::same_as<Argument> auto... arguments) {
    return text(kOnAny, condition, format, arguments...);
}

consteval Entry sel(uint64_t n, const char* format, std::same_as<Argument> auto... arguments) {
    return text(kOnOther, is(byte(0, a4), n), format, arguments...);
}

consteval Entry value(uint64_t n, const char* format, std::same_as<Argument> auto... arguments) {
    return text(kOnOther, is(a2, n), format, arguments...);
}

consteval Entry event(uint32_t code, const char* method) {
    if (codeOf(code) != code) refuse("a code with qualifier bits");
    Entry entry;
    entry.row.code = code;
    entry.method = method;
    return entry;
}

consteval Entry verbose(Entry entry) {
    if (entry.row.isEvent()) refuse("verbose() wraps a text");
    entry.row.verbose = true;
    return entry;
}

consteval Entry failure(Entry entry) {
    if (entry.row.isEvent()) refuse("failure() wraps a text");
    entry.row.failure = FailureSign::words;
    return entry;
}

consteval Entry under(const char* method, Entry entry) {
    if (entry.row.isEvent()) refuse("under() wraps a text");
    entry.method = method;
    return entry;
}

consteval Entry ofGroup(const char* group, Entry entry) {
    entry.group = group;
    return entry;
}

// The code base of an audio class: what its codes have above the event number.
consteval uint32_t audioClass(uint32_t id) {
    if (id > 63) refuse("an audio class id is 0 to 63");
    return audioClassKey(id);
}

// Whether no record that `later` would answer gets past `earlier`.
consteval bool hides(const Row& earlier, const Row& later) {
    if ((later.qualifiers & ~earlier.qualifiers) != 0) return false;
    const Condition& asked = earlier.condition;
    const Condition& given = later.condition;
    if (asked.test == Test::always || asked == given) return true;
    return asked.test == Test::notZero && given.test == Test::equals && given.value != 0 &&
           asked.slice == given.slice;
}

// The rows of a table and all they refer to, packed: characters without gaps, with a block after
// the last.
template <size_t kRows, size_t kCharacters, size_t kPieces, size_t kWordPairs>
struct Table {
    std::array<Row, kRows> rows{};
    std::array<char, kCharacters + kTextBlock> characters{};
    std::array<Piece, kPieces> pieces{};
    std::array<Stretch, kPieces> names{};
    std::array<WordPair, kWordPairs> wordPairs{};
};

consteval size_t checkedLength(size_t length) {
    if (length > 0xFFFF) refuse("a table that is too long");
    return length;
}

// The place of the event that the text at `i` belongs to; an event's own.
constexpr size_t eventOf(std::span<const Entry> entries, size_t i) {
    for (; !entries[i].row.isEvent(); --i) {
        if (i == 0) refuse("a text before the first event");
    }
    return i;
}

// The two sides of "Group::method".
struct NameParts {
    std::string_view group;
    std::string_view method;

    constexpr size_t length() const { return group.size() + kNameSeparator.size() + method.size(); }
};

constexpr bool hasOwnName(const Entry& entry) {
    return entry.row.isEvent() || !entry.group.empty() || !entry.method.empty();
}

// What an entry prints under: its own group and method, else its event's, else the class's group.
constexpr NameParts nameOf(const Entry& entry, const Entry& event, std::string_view group) {
    if (!event.group.empty()) group = event.group;
    if (!entry.group.empty()) group = entry.group;
    return {group, entry.method.empty() ? event.method : entry.method};
}

consteval size_t charactersOf(std::span<const Entry> entries, std::string_view group) {
    size_t sum = 0;
    for (size_t i = 0; i < entries.size(); ++i) {
        const Entry& entry = entries[i];
        if (hasOwnName(entry)) sum += nameOf(entry, entries[eventOf(entries, i)], group).length();
        sum += entry.text.size();
        for (size_t n = 0; n < entry.pieceCount; ++n) sum += entry.names[n].size();
        for (const Words& words : entry.wordPairs) sum += words.notZero.size() + words.zero.size();
    }
    return checkedLength(sum);
}

consteval size_t sumOf(std::span<const Entry> entries, auto count) {
    size_t sum = 0;
    for (const Entry& entry : entries) sum += count(entry);
    return checkedLength(sum);
}

// A string literal as the argument of a template.
template <size_t kSize>
struct Literal {
    char characters[kSize]{};

    consteval Literal(const char (&literal)[kSize]) { std::copy_n(literal, kSize, characters); }
    constexpr std::string_view view() const { return {characters, kSize - 1}; }
};

template <const auto& kEntries, Literal kGroup>
inline constexpr auto kTable = [] {
    constexpr auto kPieceCount = [](const Entry& entry) { return entry.pieceCount; };
    constexpr auto kPairCount = [](const Entry& entry) { return entry.wordPairCount; };
    Table<std::size(kEntries), charactersOf(kEntries, kGroup.view()), sumOf(kEntries, kPieceCount),
          sumOf(kEntries, kPairCount)>
        table;
    uint16_t characters = 0;
    uint16_t pieces = 0;
    uint16_t wordPairs = 0;
    const auto pack = [&](std::string_view text) {
        const Stretch packed{characters, static_cast<uint16_t>(text.size())};
        for (const char character : text) table.characters[characters++] = character;
        return packed;
    };
    for (size_t i = 0; i < table.rows.size(); ++i) {
        const Entry& entry = kEntries[i];
        Row& row = table.rows[i] = entry.row;
        const size_t event = eventOf(kEntries, i);
        if (hasOwnName(entry)) {
            const NameParts name = nameOf(entry, kEntries[event], kGroup.view());
            row.name = pack(name.group);
            row.groupLength = row.name.length;
            pack(kNameSeparator);
            pack(name.method);
            row.name.length = static_cast<uint16_t>(name.length());
        } else {
            row.name = table.rows[event].name;
            row.groupLength = table.rows[event].groupLength;
        }
        row.text = pack(entry.text);
        row.pieces = {pieces, entry.pieceCount};
        for (size_t n = 0; n < entry.pieceCount; ++n) {
            table.names[pieces] = pack(entry.names[n]);
            table.pieces[pieces++] = entry.pieces[n];
        }
        row.wordPairs = wordPairs;
        for (size_t n = 0; n < entry.wordPairCount; ++n) {
            const auto& [notZero, zero] = entry.wordPairs[n];
            table.wordPairs[wordPairs++] = {pack(notZero), pack(zero)};
        }
    }
    return table;
}();

template <const auto& kEntries, Literal kGroup>
constexpr Decoder withTable(uint32_t codeBase) {
    constexpr const auto& table = kTable<kEntries, kGroup>;
    return {.codeBase = codeBase,
            .group = kGroup.view(),
            .rows = table.rows,
            .characters = table.characters.data(),
            .pieces = table.pieces.data(),
            .names = table.names.data(),
            .wordPairs = table.wordPairs.data()};
}

// A class's decoder: its group, its code base, how many events it knows; of a table whose codes
// ascend.
template <const auto& kEntries, Literal kGroup>
consteval Decoder decoder(uint32_t codeBase, size_t events) {
    Decoder result = withTable<kEntries, kGroup>(codeBase);
    const std::span<const Row> rows = result.rows;
    size_t seen = 0;
    uint32_t lastCode = 0;
    size_t eventRow = 0;
    for (size_t i = 0; i < rows.size(); ++i) {
        const size_t methodAt = rows[i].groupLength + kNameSeparator.size();
        if (rows[i].groupLength == 0 || rows[i].name.length == methodAt) {
            refuse("a name that lacks its group or its method");
        }
        if (rows[i].isEvent()) {
            if (classKeyOf(rows[i].code) != codeBase) refuse("a code of another class");
            if (seen > 0 && rows[i].code <= lastCode) refuse("codes out of order");
            lastCode = rows[i].code;
            eventRow = i;
            ++seen;
            result.rowAfterEvent[eventNumberOf(rows[i].code)] = static_cast<uint16_t>(i + 1);
            continue;
        }
        Answers& answers = result.answers[eventNumberOf(lastCode)];
        answers.all |= rows[i].qualifiers;
        if (rows[i].failure != FailureSign::none) answers.failing |= rows[i].qualifiers;
        for (size_t earlier = eventRow + 1; earlier < i; ++earlier) {
            if (hides(rows[earlier], rows[i])) refuse("a text that an earlier one hides");
        }
    }
    if (seen != events) refuse("a class with another number of events");
    return result;
}

// A decoder that knows every event of its class and prints none of them.
template <const auto& kEntries>
consteval Decoder silentDecoder() {
    Decoder result = withTable<kEntries, "">(classKeyOf(kEntries[0].row.code));
    result.gate = Gate::shut;
    result.rowAfterEvent.fill(1);
    return result;
}

// A decoder whose lines only some see.
consteval Decoder gated(Gate gate, Decoder decoder) {
    decoder.gate = gate;
    return decoder;
}

// A decoder whose arg1 is a value like the others, not an object pointer.
consteval Decoder withoutObject(Decoder decoder) {
    decoder.hasObject = false;
    return decoder;
}

}  // namespace sonaprobe::rows
