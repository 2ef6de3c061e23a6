// The columns before the LOG text.

#include "lines/prefix.h"

#include <algorithm>
#include <cstring>

#include "events/number_text.h"
#include "probe/options.h"

namespace sonaprobe {

namespace {

constexpr size_t kNameLength = 73;  // longer names are cut
constexpr size_t kNameWidth = 30;
constexpr size_t kNarrowNameWidth = 10;  // without method

void printDirection(LineState& state, Qualifier qualifier) {
    const char* const mark = qualifier == Qualifier::start ? "-> "
                             : qualifier == Qualifier::end ? "<- "
                                                           : "   ";
    state.line.moveTo(putText(state.line.cursor(), {mark, 3}));
    if (!state.options.indent) return;
    switch (qualifier) {
        case Qualifier::start: state.line.blanks(state.indentation.in()); break;
        case Qualifier::end: state.line.blanks(state.indentation.out()); break;
        default: state.line.blanks(state.indentation.pad()); break;
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
    char* at = state.line.cursor();
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
    state.line.moveTo(at);

    printDirection(state, qualifierOf(header.debugid));

    at = putName(state.line.cursor(), name, options);
    if (object != 0 && options.showPointer) {
        at = putHexDigits(putText(at, "(0x"), object, 16);
        at = putText(at, ") ");
    }
    state.line.moveTo(at);
}

}  // namespace sonaprobe
