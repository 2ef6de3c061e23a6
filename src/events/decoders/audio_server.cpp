// The audio server's I/O threads, cycles and clients: user space, outside the audio class word.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kServerRows[] = {
    event(0x21040000, "OVERLOAD"),
    start("inCurrentSampleTime: %llu inCurrentHostTime: %llu inTargetSampleTime: %llu inTargetHostTime: %llu", a1, a2, a3, a4),

    event(0x21040004, "IOThread"),
    start("Start - PID: %llu SampleRate: %lluHz", a1, a2),
    end("End"),

    event(0x21040008, "IOCycle"),
    start("Start - SampleTime: %llu HostTime: %llu BufferSize: %llu", a1, a2, a3),
    end("End - WakeSampleTime: %llu WakeHostTime: %llu", a1, a2),

    event(0x2104000C, "Client"),
    start("Start - InSampleTime: %llu InHostTime: %llu OutSampleTime: %llu OutHostTime: %llu", a1, a2, a3, a4),
    end("End"),

    event(0x21040010, "ZeroTimeStamp"),
    start("inSampleTime: %llu inHostTime: %llu inHostTicksPerFrame: %llu / %llu", a1, a2, a3, named("divisor", a4)),
};

}  // namespace

constexpr Decoder kAudioServer = gated(Gate::audioServer, withoutObject(decoder<kServerRows, "QuorraHAL">(kAudioServerKey, 5)));

}  // namespace sonaprobe::decoders
