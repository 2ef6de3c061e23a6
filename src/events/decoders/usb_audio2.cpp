// USB audio, second generation (class 41): an engine that hands its I/O buffers on as they are, and
// the device that powers its engines up and down.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kUsbAudio2Rows[] = {
    event(0x0524A400, "stopAudioEngine"),
    start("Start - mIsRunning: %s mTimeStampSeed: %lld mSampleTime: %lld", boolean(a2), a3, a4),
    end("End - mSampleTime: %lld mIsRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    other("waiting for completions - transfersInFlight: %lld", a2),

    event(0x0524A404, "pauseAudioEngine"),
    start("Start - mIsRunning: %s mSampleTime: %lld", boolean(a2), a3),
    end("End - mIsPaused: %s mTimeStampSeed: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),

    event(0x0524A408, "takeTimeStamp"),
    // The fourth value fills arg1, the last word that the driver can fill: arg5 is the thread.
    verbose(other("mTimeStampSeed: %lld mSampleTime: %lld mHostTime: %lld diff: %lld", a2, a3, a4, a1)),

    event(0x0524A40C, "free"),
    start("Start - mInputBuffer: %p mOutputBuffer: %p mDevice: %p", a2, a3, a4),
    end("End"),

    event(0x0524A410, "stop"),
    start("Start - provider: %p mIsRunning: %s isInactive: %s", a2, boolean(a3), boolean(a4)),
    end("End - provider: %p mInputBuffer: %p mOutputBuffer: %p", a2, a3, a4),
    other("stopping hardware - mSampleTime: %lld", a2),

    event(0x0524A414, "doIO"),
    verbose(start("Start - (%s)sampleTime: %lld hostTime: %lld inIOBufferFrameSize: %d", named("direction", either(hi(a4), "output", "input")), a2, a3, lo(a4))),  // four values: the direction shares a word with the size
    verbose(end("End - sampleTime: %lld bytes: %lld result: 0x%08x", a2, a3, lo(a4))),
    other("ERROR: I/O late - sampleTime: %lld mSampleTime: %lld", a2, a3),

    event(0x0524A418, "startAudioEngine"),
    start("Start - sampleRate: %lld bufferFrameSize: %lld mTimeStampSeed: %lld", a2, a3, a4),
    end("End - mIsRunning: %s result: 0x%08x", boolean(a2), lo(a3)),
    verbose(sel(0, "starting hardware - mDevice: %p mSampleTime: %lld", a2, a3)),
    sel(1, "ERROR: starting hardware - returned: 0x%08x", lo(a2)),

    ofGroup("Audio2Device", event(0x0524A4C8, "free")),
    start("Start - mEngineArray: %p mControlArray: %p mWorkLoop: %p", a2, a3, a4),
    end("End"),

    ofGroup("Audio2Device", event(0x0524A4CC, "willTerminate")),
    start("Start - provider: %p options: 0x%llx mRunningEngines: %lld", a2, a3, a4),
    end("End - provider: %p currentPowerState: %lld returning %s", a2, a3, named("returning", boolean(a4))),

    ofGroup("Audio2Device", event(0x0524A4D0, "protectedSetPowerState")),
    start("Start - currentPowerState: %lld ---> %lld mRunningEngines: %lld", a2, named("new currentPowerState", a3), a4),
    end("End - currentPowerState: %lld pendingPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engines running - currentPowerState: %lld pendingPowerState: %lld", a2, a3),
    sel(1, "completing later - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    ofGroup("Audio2Device", event(0x0524A4D4, "protectedCompletePowerStateChange")),
    start("Start - currentPowerState: %lld pendingPowerState: %lld", a2, a3),
    end("End - currentPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "waking - controls: %lld", a2),
    sel(1, "ERROR: changing power state - returned: 0x%08x currentPowerState: %lld", lo(a2), a3),

    ofGroup("Audio2Device", event(0x0524A4D8, "audioEngineStarting")),
    start("Start - engine: %p mRunningEngines: %lld currentPowerState: %lld", a2, a3, a4),
    end("End - mRunningEngines: %lld currentPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("first engine - currentPowerState: %lld", a2),

    ofGroup("Audio2Device", event(0x0524A4DC, "audioEngineStopped")),
    start("Start - engine: %p mRunningEngines: %lld", a2, a3),
    end("End - mRunningEngines: %lld result: 0x%08x", a2, lo(a3)),
    other("last engine - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    ofGroup("Audio2Device", event(0x0524A4E0, "activateAudioEngine")),
    start("Start - engine: %p index: %lld", a2, a3),
    end("End - engine: %p active engines: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("publishing - engine: %p input streams: %lld output streams: %lld", a2, a3, a4),

    ofGroup("Audio2Device", event(0x0524A4E4, "deactivateAllAudioEngines")),
    start("Start - active engines: %lld mRunningEngines: %lld", a2, a3),
    end("End - refused: %lld result: 0x%08x", a2, lo(a3)),
    other("engine: %p index: %lld isRunning: %s", a2, a3, boolean(a4)),

    ofGroup("Audio2Device", event(0x0524A4E8, "flushAudioControls")),
    start("Start - mControlArray: %p count: %lld", a2, a3),
    end("End - written: %lld failed: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "writing control: %p value: %lld", a2, a3),
    sel(1, "ERROR: writing control: %p returned: 0x%08x", a2, lo(a3)),

    ofGroup("Audio2Device", event(0x0524A4EC, "stop")),
    start("Start - provider: %p active engines: %lld currentPowerState: %lld", a2, a3, a4),
    end("End - provider: %p currentPowerState: %lld", a2, a3),
    other("closing - mControlInterface: %p", a2),
};

}  // namespace

constexpr Decoder kUsbAudio2 = decoder<kUsbAudio2Rows, "Audio2Engine">(audioClass(41), 17);

}  // namespace sonaprobe::decoders
