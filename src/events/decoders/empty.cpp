// The decoder of the classes whose events are known and never printed (2, 5, 6, 8 to 11, 36, 39).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kSilentRows[] = {event(0x05240800, "")};

}  // namespace

constexpr Decoder kEmpty = silentDecoder<kSilentRows>();

}  // namespace sonaprobe::decoders
