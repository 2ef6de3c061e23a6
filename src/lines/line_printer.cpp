// Which layout a record has, and the line of a decoded event.

#include "lines/line_printer.h"

#include "events/log_text.h"
#include "lines/prefix.h"
#include "lines/unclassified.h"

namespace sonaprobe {

namespace {

// Only audio codes can be filtered; a class named by --filter-all-except outweighs --filter-out.
bool passesClassFilter(const LineOptions& options, uint32_t debugid) {
    if (classWordOf(debugid) != kAudioClassWord) return true;
    const uint32_t classId = classIdOf(debugid);
    if (!options.filterAllExcept.empty()) return options.filterAllExcept.contains(classId);
    return !options.filterOut.contains(classId);
}

bool isOpen(Gate gate, const LineOptions& options) {
    switch (gate) {
        case Gate::audioServer: return options.includeHAL != 0;
        case Gate::historic: return options.showHistoric != 0;
        case Gate::shut: return false;
        case Gate::open: break;
    }
    return true;
}

void printEvent(LineState& state, const Event& event) {
    const Row& text = *event.text;
    const EventName name{event.decoder->text(text.name), text.groupLength};
    const uint64_t object = event.decoder->hasObject ? event.record->arg1 : 0;
    printEventPrefix(state, headerOf(*event.record), name, object);
    state.line.moveTo(putLogText(state.line.cursor(), event, state.ticksPerMicrosecond));
    state.line.end();
}

}  // namespace

void LinePrinter::print(const TraceRecord& record) {
    if (!passesClassFilter(state_.options, record.debugid)) return;
    if (state_.options.basicFormat) return printBasicRecord(state_, record);

    const Decoder* const decoder = decoderOf(record.debugid);
    if (decoder != nullptr && !isOpen(decoder->gate, state_.options)) return;
    const Event event = decode(record, decoder);
    if (event.outcome == Outcome::unknown) return printUnclassifiedRecord(state_, record);
    const bool isShown = event.outcome == Outcome::text ||
                         (event.outcome == Outcome::gated && state_.options.verbose != 0);
    if (isShown) printEvent(state_, event);
}

void LinePrinter::takeSlot(const TraceRecord& slot) {
    switch (slot.debugid) {
        case kInvalidMarker: return;
        case kDivisorMarker: return setTicksPerMicrosecond(static_cast<double>(slot.timestamp));
        default: return print(slot);
    }
}

}  // namespace sonaprobe
