// The layouts for records that no decoder prints.

#include "lines/unclassified.h"

#include "events/number_text.h"
#include "lines/prefix.h"

namespace sonaprobe {

namespace {

// The trace clock of the basic layout has 1000 ticks a microsecond, whatever the timebase.
constexpr double kBasicTicksPerMicrosecond = 1000.0;

enum class Thread { blankFilled, zeroFilled };

// "%16lx  %16lx  %16lx  %16lx  0x%16lx  %2u": arg1 to arg4, the thread, the processor.
char* putRawWords(char* at, const TraceRecord& record, Thread thread) {
    for (const uint64_t word : {record.arg1, record.arg2, record.arg3, record.arg4}) {
        at = putText(putHex(at, word, 16), "  ");
    }
    at = putText(at, "0x");
    at = thread == Thread::zeroFilled ? putHexDigits(at, record.arg5, 16)
                                      : putHex(at, record.arg5, 16);
    return putUnsigned(putText(at, "  "), record.cpuid, 2);
}

// "0x%04x|%02u|%03u": class word, class id, event number.
char* putSplitCode(char* at, uint32_t debugid) {
    at = putHexDigits(putText(at, "0x"), classWordOf(debugid), 4);
    *at++ = '|';
    at = putTwoDigits(at, classIdOf(debugid));
    *at++ = '|';
    return putThreeDigits(at, eventNumberOf(debugid));
}

// Start and end point the other way round than in the event prefix.
std::string_view reversedMark(Qualifier qualifier) {
    switch (qualifier) {
        case Qualifier::start: return "<-";
        case Qualifier::end: return "->";
        default: return "  ";
    }
}

void printMarkedLine(LineState& state, const TraceRecord& record, std::string_view kind) {
    char* at = state.line.cursor();
    at += state.time
              .formatEventTime(record.timestamp, state.options.timeMode, state.ticksPerMicrosecond,
                               at)
              .size();
    *at++ = ' ';
    at = putText(at, reversedMark(qualifierOf(record.debugid)));
    *at++ = ' ';
    at = putText(at, kind);
    at = putSplitCode(at, record.debugid);
    at = putText(at, "  ");
    state.line.moveTo(putRawWords(at, record, Thread::blankFilled));
    state.line.end();
}

void printNamedLine(LineState& state, const TraceRecord& record) {
    char name[kNameSeparator.size() + kMaxCodeName + kTextBlock] = {};
    const char* const found = state.names(codeOf(record.debugid));
    char* const method = putText(name, kNameSeparator);
    const char* const end = found != nullptr ? putText(method, found)
                                             : putSplitCode(putText(method, "U-"), record.debugid);
    const BlockText text{name, static_cast<size_t>(end - name)};
    printEventPrefix(state, headerOf(record), {text}, 0);
    state.line.moveTo(putRawWords(state.line.cursor(), record, Thread::blankFilled));
    state.line.end();
}

// "%<width>.1f" of the microseconds. Rounding in integers gives printf's digits, except half-way
// between two tenths, where the real's own error decides, and from 2^53 ticks on, which a real may
// not hold exactly.
char* putMicroseconds(char* at, uint64_t ticks, unsigned width) {
    constexpr uint64_t kTicksPerTenth = 100;
    constexpr uint64_t kBeyondReals = uint64_t{1} << 53;
    if (ticks >= kBeyondReals || ticks % kTicksPerTenth == kTicksPerTenth / 2) {
        return putReal(at, static_cast<double>(ticks) / kBasicTicksPerMicrosecond, 1, width);
    }
    const uint64_t tenths = (ticks + kTicksPerTenth / 2) / kTicksPerTenth;
    at = putUnsigned(at, tenths / 10, width - 2);
    *at = '.';
    at[1] = static_cast<char>('0' + tenths % 10);
    return at + 2;
}

// "%#010x": zero has no "0x".
char* putAlternateCode(char* at, uint32_t code) {
    return code == 0 ? putFill(at, '0', 10) : putHexDigits(putText(at, "0x"), code, 8);
}

char* putBasicName(char* at, uint32_t debugid, const char* name) {
    constexpr size_t kNameWidth = 30;
    const char* const begin = at;
    if (name != nullptr) {
        at = putText(at, name);
    } else {
        at = putAlternateCode(at, debugid);
    }
    const auto length = static_cast<size_t>(at - begin);
    return length < kNameWidth ? putFill(at, ' ', kNameWidth - length) : at;
}

}  // namespace

void printUnclassifiedRecord(LineState& state, const TraceRecord& record) {
    if (classWordOf(record.debugid) == kAudioClassWord) {
        printMarkedLine(state, record, "F-");
    } else if ((state.options.printMask & kPrintAll) == 0) {
        return;
    } else if (state.names) {
        printNamedLine(state, record);
    } else {
        printMarkedLine(state, record, "U-");
    }
}

void printBasicRecord(LineState& state, const TraceRecord& record) {
    if (state.firstTimestamp == 0) {
        state.firstTimestamp = state.previousTimestamp = record.timestamp;
    }
    const char* const name = state.names ? state.names(codeOf(record.debugid)) : nullptr;

    char* at = state.line.cursor();
    at = putMicroseconds(at, record.timestamp - state.firstTimestamp, 10);
    *at++ = ' ';
    at = putMicroseconds(at, record.timestamp - state.previousTimestamp, 5);
    state.previousTimestamp = record.timestamp;
    at = putText(at, "  ");
    if (state.names) {
        at = putBasicName(at, record.debugid, name);
        *at++ = ' ';
    } else {
        at = putHexDigits(putText(at, "0x"), record.debugid, 8);
        at = putText(at, "  ");
    }
    state.line.moveTo(putRawWords(at, record, Thread::zeroFilled));
    state.line.end();
}

}  // namespace sonaprobe
