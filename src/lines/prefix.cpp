// The columns before the LOG text.

#include "lines/prefix.h"

#include <algorithm>
#include <cstring>

#include "events/number_text.h"
#include "lines/event_time.h"
#include "lines/indentation.h"
#include "lines/output_line.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

constexpr size_t kNameLength = 73;  // longer names are cut
constexpr size_t kNameWidth = 30;
constexpr size_t kNarrowNameWidth = 10;  // without method

void printDirection(Qualifier qualifier) {
    const char* const mark = qualifier == Qualifier::start ? "-> "
                             : qualifier == Qualifier::end ? "<- "
                                                           : "   ";
    outputLine.moveTo(putText(outputLine.cursor(), {mark, 3}));
    if (!settings.indent) return;
    switch (qualifier) {
        case Qualifier::start: indentIn(); break;
        case Qualifier::end: indentOut(); break;
        default: indentPad(); break;
    }
}

char* putName(char* at, const EventName& name) {
    char* const begin = at;
    const size_t method = name.groupLength + 2;
    const size_t first = settings.showGroup ? 0 : method;
    const size_t last = settings.showMethod ? name.text.length : method;
    at = putBlocks(at, name.text.part(first, std::min(last - first, kNameLength)));

    static_assert(kNameWidth < kTextBlock);
    std::memset(at, ' ', kTextBlock);
    if (!settings.noSeparator) {
        at = std::max(at, begin + (settings.showMethod ? kNameWidth : kNarrowNameWidth));
    }
    return at + 1;
}

}  // namespace

bool printEventPrefix(EventHeader header, EventName name, uint64_t object) {
    char* at = outputLine.cursor();
    if (settings.timeMode != 0) {
        at += formatEventTime(header.timestamp, at).size();
        *at++ = ' ';
    }
    if (settings.showCpu) {
        const char* const begin = at;
        at = putUnsigned(at, header.cpuid);
        if (at - begin < 2) *at++ = ' ';
        *at++ = ' ';
    }
    if (settings.showThread) {
        at = putHexZeroFilled(putText(at, "0x"), header.thread, 8);
        *at++ = ' ';
    }
    if (settings.showCodes) {
        at = putHexDigits(putText(at, "0x"), header.debugid, 8);
        *at++ = ' ';
    }
    outputLine.moveTo(at);

    printDirection(qualifierOf(header.debugid));

    at = putName(outputLine.cursor(), name);
    if (object != 0 && settings.showPointer) {
        at = putHexDigits(putText(at, "(0x"), object, 16);
        at = putText(at, ") ");
    }
    outputLine.moveTo(at);
    return true;
}

}  // namespace sonaprobe
