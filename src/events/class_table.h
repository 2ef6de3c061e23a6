// The decoders by audio class id, and by debug id.

#pragma once

#include <array>

#include "events/decoder.h"
#include "events/decoders/decoders.h"
#include "record/trace_record.h"

namespace sonaprobe {

// Null for the classes whose records are unclassified.
extern const std::array<const Decoder*, 64> kClassTable;

// The decoder of a record's class, the audio server's among them; null where there is none.
inline const Decoder* decoderOf(uint32_t debugid) {
    if (classWordOf(debugid) == kAudioClassWord) return kClassTable[classIdOf(debugid)];
    return classKeyOf(debugid) == kAudioServerKey ? &decoders::kAudioServer : nullptr;
}

}  // namespace sonaprobe
