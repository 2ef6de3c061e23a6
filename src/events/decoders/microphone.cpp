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
    end("End - provider: %p returning %s", a2, boolean(a3)),
    sel(0, "mapped registers at 0x%llx length: 0x%llx", a2, a3),
    sel(1, "no interrupt at index: %lld in provider: %p - FIFO errors will go unseen", a2, a3),

    event(0x0524B808, "powerOnHardware"),
    start("Start - fPowerOnCount: %lld fCurrentPowerState: %lld", a2, a3),
    end("End - fPowerOnCount: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "power domain up after %d.%03d.%03d.%03d, resetting decimators: %lld", nanos(a2), a3),
    sel(1, "ERROR: revision register reads 0x%llx, expected 0x%llx - is the block powered?", a2, a3),

    event(0x0524B80C, "PublishBelow"),
    start("Start - fDecimatorCount: %lld fMicCount: %lld", a2, a3),
    end("End - nubs published: %d of %d result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "publishing nub: %p for decimator: %lld", a2, a3),
    sel(1, "decimator: %lld has no mic wired - not published", a2),

    event(0x0524B810, "getSupportedSampleRateList"),
    start("Start - fPDMClockRate: %lld room for rates: %lld", a2, a3),
    end("End - rates: %lld lowest: %d highest: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "sampleRate: %lld with decimationRatio: %lld", a2, a3),
    sel(1, "sampleRate: %lld needs a PDM clock of %lld Hz - left out", a2, a3),

    event(0x0524B814, "isMicEnabled"),
    start("Start - micIndex: %lld fMicEnableMask: 0x%llx", a2, a3),
    end("End - micIndex: %lld decimator: %lld returning %s", a2, a3, boolean(a4)),

    event(0x0524B818, "getSupportedChannelCountList"),
    start("Start - fMicCount: %lld room for channel counts: %lld", a2, a3),
    end("End - channel counts: %lld highest: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "channelCount: %lld from micMask: 0x%llx", a2, a3),

    event(0x0524B81C, "interruptAction"),
    start("Start - source: %lld interruptStatus: 0x%08x interruptMask: 0x%08x", a2, hi(a3), lo(a3)),
    end("End - acknowledged: 0x%08x still pending: 0x%08x", hi(a2), lo(a2)),
    sel(0, "FIFO overrun on decimator: %d frames lost: %d fOverrunCount: %lld", hi(a2), lo(a2), a3),
    sel(1, "FIFO read while empty on decimator: %d fifoLevel: %d fUnderrunCount: %lld", hi(a2), lo(a2), a3),
    sel(2, "interruptStatus: 0x%llx has nothing of ours - fSpuriousCount: %lld", a2, a3),

    event(0x0524B820, "ReadReg"),
    any("[%#8x] -> %#8x", lo(a2), lo(a3)),

    event(0x0524B824, "WriteReg"),
    any("[%#8x] <- %#8x", lo(a2), lo(a3)),

    event(0x0524B828, "setPowerStateGated"),
    start("Start - powerState: %lld fCurrentPowerState: %lld fRunningCount: %lld", a2, a3, a4),
    end("End - fCurrentPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "audio still running, stopping decimators: 0x%llx before power goes", a2),
    sel(1, "awake again, restoring registers: %lld decimators: 0x%llx", a2, a3),

    event(0x0524B82C, "StartAudio"),
    start("Start - sampleRate: %d channelCount: %d fMicEnableMask: 0x%llx fRunningCount: %lld", hi(a2), lo(a2), a3, a4),
    end("End - fRunningCount: %lld first frame: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "first user, clocks and decimators go on - decimatorMask: 0x%llx", a2),
    sel(1, "DMA armed - bufferSize: %lld fDMABufferCount: %lld", a2, a3),

    event(0x0524B830, "setFIFO"),
    start("Start - watermark: %d fFIFODepth: %d bytesPerFrame: %lld", hi(a2), lo(a2), a3),
    end("End - fifoControl: 0x%08x watermark: %d result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "watermark: %lld leaves no room for DMA latency, using %lld", a2, a3),

    ofGroup("OrvelPDMOrvelPDMControllerAudio", event(0x0524B834, "StopAudio")),  // sic, the name doubled
    start("Start - fRunningCount: %lld fDMARunning: %s fMicEnableMask: 0x%llx", a2, boolean(a3), a4),
    end("End - fRunningCount: %lld frames captured: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last user, draining fifoLevel: %lld frames before the decimators stop", a2),
    sel(1, "DMA did not come to rest in %d.%03d.%03d.%03d - aborting, dmaStatus: 0x%llx", nanos(a2), a3),

    event(0x0524B838, "Enable Clocks"),  // with a blank
    start("Start - enable: %s clockMask: 0x%llx fClockUseCount: %lld", boolean(a2), a3, a4),
    end("End - clocks running: 0x%llx fPDMClockRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "clock gate: %lld has not switched after %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "clocks shared with the voice trigger stay on - clockMask: 0x%llx", a2),

    event(0x0524B83C, "enableDecimators"),
    start("Start - enable: %s decimatorMask: 0x%llx running: 0x%llx", boolean(a2), a3, a4),
    end("End - running: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "decimator: %lld on, first %lld frames are settling", a2, a3),
    sel(1, "decimator: %lld still needed by micMask: 0x%llx - left on", a2, a3),

    event(0x0524B840, "setDeviceSampleRate"),
    start("Start - sampleRate: %lld fSampleRate: %lld fRunningCount: %lld", a2, a3, a4),
    end("End - fSampleRate: %lld decimationRatio: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "fPDMClockRate: %lld -> %lld", a2, a3),
    sel(1, "refused, audio is running at fSampleRate: %lld for users: %lld", a2, a3),

    event(0x0524B844, "getFIFODepth"),
    start("Start - fifoBytes: %lld bytesPerFrame: %lld", a2, a3),
    end("End - returning %lld frames", a2),

    event(0x0524B848, "getLatency"),
    start("Start - sampleRate: %lld decimationRatio: %lld watermark: %lld", a2, a3, a4),
    end("End - filterDelay: %d fifoDelay: %d returning %lld frames", hi(a2), lo(a2), a3),

    event(0x0524B84C, "dmaCompleteAction"),
    start("Start - dmaStatus: 0x%08x byteCount: %d fDMABufferIndex: %lld time: %d.%03d.%03d.%03d", hi(a2), lo(a2), a3, nanos(a4)),
    end("End - next fDMABufferIndex: %lld bytes queued: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "short transfer, %lld of %lld bytes - the rest is silence", a2, a3),
    sel(1, "%d.%03d.%03d.%03d late, hardware is in buffer: %lld already", nanos(a2), a3),

    event(0x0524B850, "executeIISCommand"),
    start("Start - command: %d parameter: 0x%08x iisPort: %p", hi(a2), lo(a2), a3),
    end("End - command: %lld portStatus: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "iisPort: %p busy with command: %lld", a2, a3),
    sel(1, "no answer to command: %lld within %d.%03d.%03d.%03d", a2, nanos(a3)),

    ofGroup("OrvelPDMAudio", event(0x0524B854, "start")),
    start("Start - provider: %p fController: %p", a2, a3),
    end("End - streams created: %lld returning %s", a2, boolean(a3)),
    sel(0, "fController: %p offers sample rates: %d channel counts: %d", a2, hi(a3), lo(a3)),

    ofGroup("OrvelPDMAudio", event(0x0524B858, "setDeviceSampleRate")),
    start("Start - sampleRate: %lld fIORunning: %s", a2, boolean(a3)),
    end("End - device sampleRate: %lld latency: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "asking fController: %p for sampleRate: %lld", a2, a3),
    sel(1, "fController refused with 0x%llx, streams back to sampleRate: %lld", a2, a3),

    ofGroup("OrvelPDMDecimator", event(0x0524B85C, "initWithRegistryEntry")),
    start("Start - entry: %p fController: %p", a2, a3),
    end("End - fIndex: %d fMicCount: %d fRegisterOffset: 0x%llx returning %s", hi(a2), lo(a2), a3, boolean(a4)),
    sel(0, "entry: %p has no register offset - decimator: %lld left out", a2, a3),
    sel(1, "micIndex: %lld is sampled on the %s clock edge", a2, either(a3, "rising", "falling")),

    ofGroup("OrvelPDMDecimator", event(0x0524B860, "setMicEnabled")),
    start("Start - micIndex: %lld enable: %s fMicEnableMask: 0x%llx", a2, boolean(a3), a4),
    end("End - fMicEnableMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "micIndex: %lld is not on this decimator, which has mics: 0x%llx", a2, a3),

    ofGroup("OrvelPDMDecimator", event(0x0524B864, "enabled")),
    start("Start - fIndex: %lld fClockUseCount: %lld", a2, a3),
    end("End - decimatorControl: 0x%08x fMicEnableMask: 0x%08x returning %s", hi(a2), lo(a2), boolean(a3)),

    ofGroup("OrvelPDMDecimator", event(0x0524B868, "configureFormat")),
    start("Start - sampleRate: %d bitsPerSample: %d channelCount: %d decimationRatio: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    end("End - formatControl: 0x%08x filterDelay: %d result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "filter stages: %lld total gain shift: %lld", a2, a3),
    sel(1, "decimationRatio: %lld outside %d to %d", a2, hi(a3), lo(a3)),

    ofGroup("OrvelPDMDecimator", event(0x0524B86C, "ReadReg")),
    any("[%#8x] -> %#8x", lo(a2), lo(a3)),

    ofGroup("OrvelPDMDecimator", event(0x0524B870, "WriteReg")),
    any("[%#8x] <- %#8x", lo(a2), lo(a3)),
};

}  // namespace

constexpr Decoder kMicrophone = decoder<kMicrophoneRows, "OrvelPDMController">(audioClass(46), 28);

}  // namespace sonaprobe::decoders
