// The columns before the LOG text.

#include "lines/prefix.h"

#include <algorithm>
#include <cstring>

#include "events/number_text.h"

namespace sonaprobe {

namespace {

constexpr size_t kNameLength = 73;  // longer names are cut
constexpr size_t kNameWidth = 30;
constexpr size_t kNarrowNameWidth = 10;  // without method

void printDirection(OutputLine& line, const LineOptions& options, Indentation& indentation,
                    Qualifier qualifier) {
    const char* const mark = qualifier == Qualifier::start ? "-> "
                             : qualifier == Qualifier::end ? "<- "
                                                           : "   ";
    line.moveTo(putText(line.cursor(), {mark, 3}));
    if (!options.indent) return;
    switch (qualifier) {
        case Qualifier::start: line.blanks(indentation.in()); break;
        case Qualifier::end: line.blanks(indentation.out()); break;
        default: line.blanks(indentation.pad()); break;
    }
}

char* putName(char* at, const EventName& name, const LineOptions& options) {
    char* const begin = at;
    const size_t method = name.groupLength + kNameSeparator.size();
    const size_t first = options.showGroup ? 0 : method;
    const size_t last = options.showMethod ? name.text.length : method;
    at = putBlocks(at, name.text.part(first, std::min(last - first, kNameLength)));

    static_assert(kNameWidth < kTextBlock);
    std::memset(at, ' ', kTextBlock);
    if (!options.noSeparator) {
        at = std::max(at, begin + (options.showMethod ? kNameWidth : kNarrowNameWidth));
    }
    return at + 1;
}

}  // namespace

void printEventPrefix(LineState& state, EventHeader header, EventName name, uint64_t object) {
    const LineOptions& options = state.options;
    OutputLine& line = state.line;
    char* at = line.cursor();
    if (options.timeMode != 0) {
        at +=
            state.time
                .formatEventTime(header.timestamp, options.timeMode, state.ticksPerMicrosecond, at)
                .size();
        *at++ = ' ';
    }
    if (options.showCpu) {
        const char* const begin = at;
        at = putUnsigned(at, header.cpuid);
        if (at - begin < 2) *at++ = ' ';
        *at++ = ' ';
    }
    if (options.showThread) {
        at = putHexZeroFilled(putText(at, "0x"), header.thread, 8);
        *at++ = ' ';
    }
    if (options.showCodes) {
        at = putHexDigits(putText(at, "0x"), header.debugid, 8);
        *at++ = ' ';
    }
    line.moveTo(at);

    printDirection(line, options, state.indentation, qualifierOf(header.debugid));

    at = putName(line.cursor(), name, options);
    if (object != 0 && options.showPointer) {
        at = putHexDigits(putText(at, "(0x"), object, 16);
        at = putText(at, ") ");
    }
    line.moveTo(at);
}

}  // namespace sonaprobe
