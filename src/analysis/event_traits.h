// What an event's code says of its records before any is looked at.

#pragma once

#include <cstdint>

#include "events/class_table.h"
#include "events/event.h"
#include "record/trace_record.h"

namespace sonaprobe {

// Whether arg1 is the object that traced.
constexpr bool hasObject(uint32_t code) { return classWordOf(code) == kAudioClassWord; }

// The object of a record, 0 where its code has none.
constexpr uint64_t objectOf(const TraceRecord& record) {
    return hasObject(record.debugid) ? record.arg1 : 0;
}

// Events of the audio server that mean something to more than their line.
constexpr uint32_t kOverload = kAudioServerKey | 0 << 2;
constexpr uint32_t kIoThread = kAudioServerKey | 1 << 2;
constexpr uint32_t kIoCycle = kAudioServerKey | 2 << 2;
constexpr uint32_t kClient = kAudioServerKey | 3 << 2;
constexpr uint32_t kZeroTimeStamp = kAudioServerKey | 4 << 2;

// Any code of the audio server's class word.
constexpr bool isServer(uint32_t code) { return classWordOf(code) == classWordOf(kAudioServerKey); }

// A start of those that do not says that the call before is over.
constexpr bool recurses(uint32_t code) {
    return code != kIoThread && code != kIoCycle && code != kClient;
}

// The event's row, null where no decoder knows it.
inline const Row* eventRowOf(uint32_t code) {
    const Decoder* const decoder = decoderOf(code);
    const size_t rowAfterEvent =
        decoder == nullptr ? 0 : decoder->rowAfterEvent[eventNumberOf(code)];
    return rowAfterEvent == 0 ? nullptr : &decoder->rows[rowAfterEvent - 1];
}

// What the event's texts answer; nothing where no decoder knows it.
inline Answers answersOf(uint32_t code) {
    const Decoder* const decoder = decoderOf(code);
    return decoder == nullptr ? Answers{} : decoder->answers[eventNumberOf(code)];
}

// Whether the event's starts are points: its texts answer starts, but no ends.
inline bool startsArePoints(uint32_t code) {
    return (answersOf(code).all & (kOnStart | kOnEnd)) == kOnStart;
}

// Whether its texts answer starts and ends alike: whoever traces the one traces the other.
inline bool tracesBothEnds(uint32_t code) {
    constexpr uint8_t kBoth = kOnStart | kOnEnd;
    return (answersOf(code).all & kBoth) == kBoth;
}

// Whether the record tells of a failure. Most events have no text that does.
inline bool isFailure(const TraceRecord& record) {
    const unsigned qualifier = 1U << static_cast<unsigned>(qualifierOf(record.debugid));
    return (answersOf(record.debugid).failing & qualifier) != 0 && isFailure(decode(record));
}

}  // namespace sonaprobe
