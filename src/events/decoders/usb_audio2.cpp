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
    end("End - last mSampleTime: %lld mIsRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    other("waiting for %lld transfers still on the bus", a2),

    event(0x0524A404, "pauseAudioEngine"),
    start("Start - mIsRunning: %s mSampleTime: %lld", boolean(a2), a3),
    end("End - mIsPaused: %s resumes with mTimeStampSeed: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),

    event(0x0524A408, "takeTimeStamp"),
    verbose(other("mTimeStampSeed: %lld mSampleTime: %lld mHostTime: %lld diff: %lld", hi(a4), a2, a3, lo(a4))),  // the two small values share a word

    event(0x0524A40C, "free"),
    start("Start - mInputBuffer: %p mOutputBuffer: %p mDevice: %p", a2, a3, a4),
    end("End"),

    event(0x0524A410, "stop"),
    start("Start - provider: %p mIsRunning: %s isInactive: %s", a2, boolean(a3), boolean(a4)),
    end("End - provider: %p mInputBuffer: %p mOutputBuffer: %p", a2, a3, a4),
    other("still running at mSampleTime: %lld - stopping hardware first", a2),

    event(0x0524A414, "doIO"),
    verbose(start("Start - (%s)sampleTime: %lld hostTime: %lld inIOBufferFrameSize: %d", either(hi(a4), "output", "input"), a2, a3, lo(a4))),
    verbose(end("End - sampleTime: %lld bytes: %lld result: 0x%08x", a2, a3, lo(a4))),
    other("ERROR: sampleTime: %lld is behind mSampleTime: %lld - I/O came too late", a2, a3),

    event(0x0524A418, "startAudioEngine"),
    start("Start - sampleRate: %lld bufferFrameSize: %lld mTimeStampSeed: %lld", a2, a3, a4),
    end("End - mIsRunning: %s result: 0x%08x", boolean(a2), lo(a3)),
    verbose(sel(0, "mDevice: %p is awake, starting at mSampleTime: %lld", a2, a3)),
    sel(1, "ERROR: hardware did not start: 0x%08x", lo(a2)),

    ofGroup("Audio2Device", event(0x0524A4C8, "free")),
    start("Start - mEngineArray: %p mControlArray: %p mWorkLoop: %p", a2, a3, a4),
    end("End"),

    ofGroup("Audio2Device", event(0x0524A4CC, "willTerminate")),
    start("Start - provider: %p options: 0x%llx mRunningEngines: %lld", a2, a3, a4),
    end("End - provider: %p currentPowerState: %lld returning %s", a2, a3, boolean(a4)),

    ofGroup("Audio2Device", event(0x0524A4D0, "protectedSetPowerState")),
    start("Start - currentPowerState: %lld ---> %lld mRunningEngines: %lld", a2, a3, a4),
    end("End - currentPowerState: %lld pendingPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engines still run - state: %lld has to wait, pendingPowerState: %lld", a2, a3),
    sel(1, "change takes %d.%03d.%03d.%03d - completing it later", nanos(a2)),

    ofGroup("Audio2Device", event(0x0524A4D4, "protectedCompletePowerStateChange")),
    start("Start - currentPowerState: %lld pendingPowerState: %lld", a2, a3),
    end("End - currentPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "waking - restoring %lld controls", a2),
    sel(1, "ERROR: device did not follow: 0x%08x - currentPowerState: %lld stays", lo(a2), a3),

    ofGroup("Audio2Device", event(0x0524A4D8, "audioEngineStarting")),
    start("Start - engine: %p mRunningEngines: %lld currentPowerState: %lld", a2, a3, a4),
    end("End - mRunningEngines: %lld currentPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("first engine to run - leaving idle, currentPowerState: %lld", a2),

    ofGroup("Audio2Device", event(0x0524A4DC, "audioEngineStopped")),
    start("Start - engine: %p mRunningEngines: %lld", a2, a3),
    end("End - mRunningEngines: %lld", a2),
    other("last engine has stopped - going idle in %d.%03d.%03d.%03d", nanos(a2)),

    ofGroup("Audio2Device", event(0x0524A4E0, "activateAudioEngine")),
    start("Start - engine: %p index: %lld", a2, a3),
    end("End - engine: %p active engines: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("engine: %p publishes %d input and %d output streams", a2, hi(a3), lo(a3)),

    ofGroup("Audio2Device", event(0x0524A4E4, "deactivateAllAudioEngines")),
    start("Start - active engines: %lld mRunningEngines: %lld", a2, a3),
    end("End - engines that refused: %lld", a2),
    other("engine: %p index: %lld is running: %s", a2, a3, boolean(a4)),

    ofGroup("Audio2Device", event(0x0524A4E8, "flushAudioControls")),
    start("Start - mControlArray: %p count: %lld", a2, a3),
    end("End - written: %lld failed: %lld", a2, a3),
    sel(0, "writing control: %p value: %lld", a2, a3),
    sel(1, "ERROR: control: %p was not taken: 0x%08x", a2, lo(a3)),

    ofGroup("Audio2Device", event(0x0524A4EC, "stop")),
    start("Start - provider: %p active engines: %lld currentPowerState: %lld", a2, a3, a4),
    end("End - provider: %p currentPowerState: %lld", a2, a3),
    other("closing mControlInterface: %p", a2),
};

}  // namespace

constexpr Decoder kUsbAudio2 = decoder<kUsbAudio2Rows, "Audio2Engine">(audioClass(41), 17);

}  // namespace sonaprobe::decoders
