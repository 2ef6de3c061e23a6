// The built-in microphones: the PDM controller, its decimators, and the audio device above them
// (class 46).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// A register access is one trace point, so its text answers every qualifier. Event 0 is not used.
constexpr Entry kMicrophoneRows[] = {
    event(0x0524B804, "start"),
    start("Start - provider: %p fDecimatorCount: %lld", a2, a3),
    end("End - provider: %p returning %s", a2, named("returning", boolean(a3))),
    sel(0, "registers - address: 0x%llx length: 0x%llx", a2, a3),
    sel(1, "ERROR: no interrupt - interrupt index: %lld provider: %p", a2, a3),

    event(0x0524B808, "powerOnHardware"),
    start("Start - fPowerOnCount: %lld fCurrentPowerState: %lld", a2, a3),
    end("End - fPowerOnCount: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "power domain on - elapsed: %d.%03d.%03d.%03d decimators: %lld", nanos(a2), a3),
    sel(1, "ERROR: unexpected revision - revisionID: 0x%llx expected revisionID: 0x%llx", a2, a3),

    event(0x0524B80C, "PublishBelow"),
    start("Start - fDecimatorCount: %lld fMicCount: %lld", a2, a3),
    end("End - published: %d nubs: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "publishing - nub: %p decimator: %lld", a2, a3),
    sel(1, "no mic - decimator: %lld", a2),

    event(0x0524B810, "getSupportedSampleRateList"),
    start("Start - fPDMClockRate(Hz): %lld capacity: %lld", a2, a3),
    end("End - count: %lld lowest: %d highest: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "sampleRate: %lld decimationRatio: %lld", a2, a3),
    sel(1, "sampleRate not supported - sampleRate: %lld pdmClockRate(Hz): %lld", a2, a3),

    event(0x0524B814, "isMicEnabled"),
    start("Start - micIndex: %lld fMicEnableMask: 0x%llx", a2, a3),
    end("End - micIndex: %lld decimator: %lld returning %s", a2, a3, named("returning", boolean(a4))),

    event(0x0524B818, "getSupportedChannelCountList"),
    start("Start - fMicCount: %lld capacity: %lld", a2, a3),
    end("End - count: %lld highest: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "channelCount: %lld micMask: 0x%llx", a2, a3),

    event(0x0524B81C, "interruptAction"),
    start("Start - source: %lld interruptStatus: 0x%08x interruptMask: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - acknowledged: 0x%08x pendingStatus: 0x%08x", lo(a2), lo(a3)),
    sel(0, "ERROR: FIFO overrun - decimator: %d frames lost: %d fOverrunCount: %lld", hi(a2), lo(a2), a3),
    sel(1, "ERROR: FIFO underrun - decimator: %d fifoLevel: %d fUnderrunCount: %lld", hi(a2), lo(a2), a3),
    sel(2, "spurious - interruptStatus: 0x%08x fSpuriousCount: %lld", lo(a2), a3),

    event(0x0524B820, "ReadReg"),
    any("[%#8x] -> %#8x", named("register", lo(a2)), named("value", lo(a3))),

    event(0x0524B824, "WriteReg"),
    any("[%#8x] <- %#8x", named("register", lo(a2)), named("value", lo(a3))),

    event(0x0524B828, "setPowerStateGated"),
    start("Start - powerState: %lld fCurrentPowerState: %lld fRunningCount: %lld", a2, a3, a4),
    end("End - fCurrentPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "stopping running audio - decimatorMask: 0x%llx", a2),
    sel(1, "restoring - registers: %lld decimatorMask: 0x%llx", a2, a3),

    event(0x0524B82C, "StartAudio"),
    start("Start - sampleRate: %d channelCount: %d fMicEnableMask: 0x%llx fRunningCount: %lld", hi(a2), lo(a2), a3, a4),
    end("End - fRunningCount: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "first user - decimatorMask: 0x%llx", a2),
    sel(1, "DMA armed - bufferSize(bytes): %lld fDMABufferCount: %lld", a2, a3),

    event(0x0524B830, "setFIFO"),
    start("Start - watermark: %d fFIFODepth: %d bytesPerFrame: %lld", lo(a2), lo(a3), a4),
    end("End - fifoControl: 0x%08x watermark: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "watermark: %lld -> %lld", a2, named("new watermark", a3)),

    ofGroup("OrvelPDMOrvelPDMControllerAudio", event(0x0524B834, "StopAudio")),  // sic, the name doubled
    start("Start - fRunningCount: %lld fDMARunning: %s fMicEnableMask: 0x%llx", a2, boolean(a3), a4),
    end("End - fRunningCount: %lld frames: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last user - fifoLevel: %lld", a2),
    sel(1, "ERROR: DMA still running - waited: %d.%03d.%03d.%03d dmaStatus: 0x%08x", nanos(a2), lo(a3)),

    event(0x0524B838, "Enable Clocks"),  // with a blank
    start("Start - enable: %s clockMask: 0x%llx fClockUseCount: %lld", boolean(a2), a3, a4),
    end("End - clockMask: 0x%llx fPDMClockRate(Hz): %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: clock gate not switched - clock gate: %lld waited: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "shared with voice trigger - clockMask: 0x%llx", a2),

    event(0x0524B83C, "enableDecimators"),
    start("Start - enable: %s decimatorMask: 0x%llx runningMask: 0x%llx", boolean(a2), a3, a4),
    end("End - runningMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "decimator on - decimator: %lld settling frames: %lld", a2, a3),
    sel(1, "decimator still in use - decimator: %lld micMask: 0x%llx", a2, a3),

    event(0x0524B840, "setDeviceSampleRate"),
    start("Start - sampleRate: %lld fSampleRate: %lld fRunningCount: %lld", a2, a3, a4),
    end("End - fSampleRate: %lld decimationRatio: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "fPDMClockRate(Hz): %lld -> %lld", a2, named("new fPDMClockRate", a3)),
    sel(1, "ERROR: audio running - fSampleRate: %lld fRunningCount: %lld", a2, a3),

    event(0x0524B844, "getFIFODepth"),
    start("Start - fifoBytes: %lld bytesPerFrame: %lld", a2, a3),
    end("End - depth(frames): %lld", a2),

    event(0x0524B848, "getLatency"),
    start("Start - sampleRate: %lld decimationRatio: %lld watermark: %d", a2, a3, lo(a4)),
    end("End - filterDelay(frames): %d fifoDelay(frames): %d latency(frames): %lld", lo(a2), lo(a3), a4),

    event(0x0524B84C, "dmaCompleteAction"),
    start("Start - dmaStatus: 0x%08x byteCount: %d fDMABufferIndex: %lld time: %d.%03d.%03d.%03d", hi(a2), lo(a2), a3, nanos(a4)),
    end("End - fDMABufferIndex: %lld bytes queued: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "zero-filling short transfer - byteCount: %lld expected byteCount: %lld", a2, a3),
    sel(1, "ERROR: completion late - elapsed: %d.%03d.%03d.%03d fDMABufferIndex: %lld", nanos(a2), a3),

    event(0x0524B850, "executeIISCommand"),
    start("Start - command: %d parameter: 0x%08x iisPort: %p", lo(a2), lo(a3), a4),
    end("End - command: %lld portStatus: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "port busy - iisPort: %p command: %lld", a2, a3),
    sel(1, "ERROR: no answer - command: %lld waited: %d.%03d.%03d.%03d", a2, nanos(a3)),

    ofGroup("OrvelPDMAudio", event(0x0524B854, "start")),
    start("Start - provider: %p fController: %p", a2, a3),
    end("End - streams: %lld returning %s", a2, named("returning", boolean(a3))),
    sel(0, "fController: %p sample rates: %d channel counts: %d", a2, hi(a3), lo(a3)),

    ofGroup("OrvelPDMAudio", event(0x0524B858, "setDeviceSampleRate")),
    start("Start - sampleRate: %lld fIORunning: %s", a2, boolean(a3)),
    end("End - sampleRate: %lld latency(frames): %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "asking - fController: %p sampleRate: %lld", a2, a3),
    sel(1, "ERROR: fController returned: 0x%08x sampleRate: %lld", lo(a2), a3),

    ofGroup("OrvelPDMDecimator", event(0x0524B85C, "initWithRegistryEntry")),
    start("Start - entry: %p fController: %p", a2, a3),
    end("End - fIndex: %d fMicCount: %d fRegisterOffset: 0x%llx returning %s", hi(a2), lo(a2), a3, named("returning", boolean(a4))),
    sel(0, "ERROR: no register offset - entry: %p decimator: %lld", a2, a3),
    sel(1, "micIndex: %lld clock edge: %s", a2, either(a3, "rising", "falling")),

    ofGroup("OrvelPDMDecimator", event(0x0524B860, "setMicEnabled")),
    start("Start - micIndex: %lld enable: %s fMicEnableMask: 0x%llx", a2, boolean(a3), a4),
    end("End - fMicEnableMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "ERROR: mic of another decimator - micIndex: %lld micMask: 0x%llx", a2, a3),

    ofGroup("OrvelPDMDecimator", event(0x0524B864, "enabled")),
    start("Start - fIndex: %lld fClockUseCount: %lld", a2, a3),
    end("End - decimatorControl: 0x%08x fMicEnableMask: 0x%llx returning %s", lo(a2), a3, named("returning", boolean(a4))),

    ofGroup("OrvelPDMDecimator", event(0x0524B868, "configureFormat")),
    start("Start - sampleRate: %d bitsPerSample: %d channelCount: %d decimationRatio: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    end("End - formatControl: 0x%08x filterDelay(frames): %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "filter stages: %lld gain shift: %lld", a2, a3),
    sel(1, "ERROR: decimationRatio out of range - decimationRatio: %lld lowest: %d highest: %d", a2, hi(a3), lo(a3)),

    ofGroup("OrvelPDMDecimator", event(0x0524B86C, "ReadReg")),
    any("[%#8x] -> %#8x", named("register", lo(a2)), named("value", lo(a3))),

    ofGroup("OrvelPDMDecimator", event(0x0524B870, "WriteReg")),
    any("[%#8x] <- %#8x", named("register", lo(a2)), named("value", lo(a3))),
};

}  // namespace

constexpr Decoder kMicrophone = decoder<kMicrophoneRows, "OrvelPDMController">(audioClass(46), 28);

}  // namespace sonaprobe::decoders
