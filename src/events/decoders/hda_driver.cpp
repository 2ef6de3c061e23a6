// The high-definition audio driver (class 21): it makes and drops the engines of one codec, carries
// power states to them and to the headset remote's driver, and follows displays and jacks.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kDriverRows[] = {
    event(0x05245404, "initHardwareAction"),
    start("Start - provider: %p codec: %p fAudioFunctionGroup: %p", a2, a3, a4),
    end("End - outputEngines: %d inputEngines: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "turning ON - functionGroup: %p", a2),
    sel(1, "restoring - functionGroup: %p afgPowerState: %lld", a2, a3),
    sel(2, "ERROR: no path to pin - pin nodeID: %lld defaultConfiguration: 0x%08x", a2, lo(a3)),

    event(0x05245414, "protectedRunPeriodicTasks"),
    start("Start - currentPowerState: %lld numRunningAudioEngines: %lld elapsed: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - currentPowerState: %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(0, "sense changed without interrupt - pin nodeID: %lld pinSense: 0x%08x -> 0x%08x", a2, hi(a3), named("new pinSense", lo(a3))),
    sel(1, "idle - elapsed: %d.%03d.%03d.%03d powerState: %lld", nanos(a2), a3),

    event(0x05245454, "startDMAEngine"),
    start("Start - engine: %p stream: %p currentPowerState: %lld", a2, a3, a4),
    end("End - engine: %p stream: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "waiting for power - engine: %p currentPowerState: %lld", a2, a3),
    sel(1, "stream: %p channel: %d streamTag: %d", a2, hi(a3), lo(a3)),

    event(0x05245478, "createAudioOutputEngine"),
    start("Start - output: %s pathSets: %lld codecAddress: %d", either(a2, "External", "Internal"), a3, lo(a4)),
    end("End - engine: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "adding - output: %s pathSet: %p pin nodeID: %d", either(a2, "External", "Internal"), a3, hi(a4)),
    sel(1, "ERROR: no usable pathSet - output: %s pathSets: %lld", either(a2, "External", "Internal"), a3),

    event(0x0524547C, "createAudioOutputEngineDP"),
    start("Start - framebuffer: %p fCRTCIndex: %d pin nodeID: %d", a2, lo(a3), lo(a4)),
    end("End - engine: %p fCRTCIndex: %d result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "no valid EDID - fCRTCIndex: %d engine: %p", lo(a2), a3),

    event(0x0524548C, "deactivateAudioEngine"),
    start("Start - output: %s engine: %p isRunning: %s", either(a2, "External", "Internal"), a3, boolean(a4)),
    end("End - engine: %p engines left: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engine: %p userClients: %lld", a2, a3),

    event(0x0524549C, "destructExtOutputEngine"),
    start("Start - fExtOutputEngine: %p isRunning: %s userClients: %lld", a2, boolean(a3), a4),
    end("End - fExtOutputEngine: %p engines left: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "stopping stream - fExtOutputEngine: %p stream: %p", a2, a3),

    event(0x052454AC, "performPowerStateChange"),
    start("Start - oldPowerState: %lld newPowerState: %lld numRunningAudioEngines: %lld", a2, a3, a4),
    end("End - newPowerState: %lld microsecondsUntilComplete: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x052454B0, "protectedPowerChangeAction"),
    start("Start - oldPowerState: %lld newPowerState: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End - currentPowerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "going to sleep/0 - numRunningAudioEngines: %lld", a2),
    sel(1, "going to idle/1 - numRunningAudioEngines: %lld", a2),
    sel(2, "going to active/2 - enginesToResume: %lld", a2),
    sel(3, "already in state - engines not notified - currentPowerState: %lld", a2),

    event(0x052454B4, "protectedPowerChange_active"),
    start("Start - oldPowerState: %lld fAudioFunctionGroup: %p afgPowerState: %lld", a2, a3, a4),
    end("End - resumed: %d engines: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "turning ON (D0) - functionGroup: %p", a2),
    sel(1, "settings lost - functionGroup: %p widgets: %lld", a2, a3),

    event(0x052454B8, "protectedPowerChange_idle"),
    start("Start - oldPowerState: %lld numRunningAudioEngines: %lld keepFunctionGroupOn: %s", a2, a3, boolean(a4)),
    end("End - afgPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "engine running - engine: %p functionGroup: %p", a2, a3),
    sel(1, "no engine running - functionGroup: %p afgPowerState: %lld", a2, a3),

    event(0x052454BC, "protectedPowerChange_sleep"),
    start("Start - oldPowerState: %lld enginesToPause: %lld fUnsolicitedEnabled: %s", a2, a3, boolean(a4)),
    end("End - paused: %lld afgPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: engine did not pause - engine: %p state: %lld", a2, a3),
    sel(1, "muting amplifier - nodeID: %lld functionGroup: %p", a2, a3),

    event(0x052454C0, "dispatchPowerStateToEngines"),
    start("Start - powerState: %lld engines: %lld", a2, a3),
    end("End - powerState: %lld refused: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "index: %lld engine: %p powerState: %d", a2, a3, hi(a4)),
    sel(1, "ERROR: engine refused - engine: %p powerState: %d returned: 0x%08x", a2, hi(a3), lo(a3)),

    event(0x052454C4, "setPowerStateToActive"),
    start("Start"),
    end("End - currentPowerState: %lld waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "currentPowerState: %lld engine: %p", a2, a3),

    event(0x052454D4, "setAggressiveness"),  // the system repeats it for every type, so only a new delay is ungated
    verbose(start("Start - type: 0x%08x newLevel: %lld fAggressiveness: %lld", lo(a2), a3, a4)),
    verbose(end("End - fAggressiveness: %lld result: 0x%08x", a2, lo(a3))),
    sel(0, "fIdleDelay: %d.%03d.%03d.%03d -> %d.%03d.%03d.%03d", nanos(a2), named("new fIdleDelay", nanos(a3))),

    event(0x052454F8, "dispatchPowerStateToOrvelPimletDriver"),
    start("Start - fOrvelPimletDriver: %p powerState: %lld currentPowerState: %lld", a2, a3, a4),
    end("End - powerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "no headset remote driver - powerState: %lld", a2),

    event(0x052454FC, "sendMessageToOrvelPimletDriver"),
    start("Start - fOrvelPimletDriver: %p message: 0x%08x argument: %p", a2, lo(a3), a4),
    end("End - message: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "no headset remote driver - message: 0x%08x argument: %p", lo(a2), a3),
    sel(1, "kept until power on - message: 0x%08x currentPowerState: %lld", lo(a2), a3),

    event(0x05245510, "message"),
    start("Start - type: 0x%08x codec: %p currentPowerState: %lld", lo(a2), a3, a4),
    end("End - type: 0x%08x handled: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "unsolicited response: 0x%08x pin nodeID: %lld", lo(a2), a3),
    sel(1, "tag not registered - unsolicited response: 0x%08x tag: 0x%llx", lo(a2), a3),
    sel(2, "codec terminating - codec: %p enginesToTerminate: %lld", a2, a3),

    event(0x05245518, "handleValidEDIDAction"),
    start("Start - fCRTCIndex: %d engine: %p currentPowerState: %lld", lo(a2), a3, a4),
    end("End - fCRTCIndex: %d formats: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "sink format - fCRTCIndex: %d sampleRate: %d channelCount: %d", lo(a2), hi(a3), lo(a3)),
    sel(1, "sink without audio - fCRTCIndex: %d engine: %p", lo(a2), a3),

    event(0x0524551C, "handleVideoFormatChangeAction"),
    start("Start - fCRTCIndex: %d engine: %p isRunning: %s", lo(a2), a3, boolean(a4)),
    end("End - fCRTCIndex: %d engineResumed: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "pausing engine - fCRTCIndex: %d engine: %p", lo(a2), a3),
    sel(1, "sampleRate not supported - fCRTCIndex: %d sampleRate: %d -> %d", lo(a2), hi(a3), named("new sampleRate", lo(a3))),

    event(0x05245520, "handleInvalidEDID"),
    start("Start - fCRTCIndex: %d framebuffer: %p engine: %p", lo(a2), a3, a4),
    end("End - fCRTCIndex: %d engineDeactivated: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "display removed while running - fCRTCIndex: %d engine: %p", lo(a2), a3),

    event(0x05245524, "handleValidEDID"),
    start("Start - fCRTCIndex: %d framebuffer: %p edidLength: %lld", lo(a2), a3, a4),
    end("End - fCRTCIndex: %d result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "EDID unchanged - fCRTCIndex: %d engine: %p", lo(a2), a3),
    sel(1, "deferred until wake - fCRTCIndex: %d currentPowerState: %lld", lo(a2), a3),

    event(0x05245528, "handleVideoFormatChange"),
    start("Start - fCRTCIndex: %d framebuffer: %p pixelClock(Hz): %llu", lo(a2), a3, a4),
    end("End - fCRTCIndex: %d pixelClock(Hz): %llu result: 0x%08x", lo(a2), a3, lo(a4)),
    sel(0, "no engine - fCRTCIndex: %d pixelClock(Hz): %llu", lo(a2), a3),

    event(0x05245554, "updateCachedPinSenseForSinkDevice"),
    start("Start - pin nodeID: %lld fPinSenseCachedResponse: 0x%08x", a2, lo(a3)),
    end("End - pin nodeID: %lld fPinSenseCachedResponse: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "sinkPresent: %s eldValid: %s", boolean(a2), boolean(a3)),
    sel(1, "keeping cached response - pin nodeID: %lld afgPowerState: %lld", a2, a3),

    event(0x05245584, "setPowerState"),
    start("Start - powerStateOrdinal: %lld device: %p currentPowerState: %lld", a2, a3, a4),
    end("End - powerStateOrdinal: %lld currentPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x05245588, "protectedSetPowerState"),
    start("Start - powerStateOrdinal: %lld pendingPowerState: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End - currentPowerState: %lld pendingPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "going to sleep/0 - currentPowerState: %lld numRunningAudioEngines: %lld", a2, a3),
    sel(1, "going to wake/1 - currentPowerState: %lld enginesToResume: %lld", a2, a3),

    event(0x0524558C, "waitForPendingPowerStateChange"),
    start("Start - asyncPowerStateChangeInProgress: %s currentPowerState: %lld pendingPowerState: %lld", boolean(a2), a3, a4),
    end("End - asyncPowerStateChangeInProgress: %s waited: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&asyncPowerStateChangeInProgress) - pendingPowerState: %lld", a2),

    event(0x05245590, "ProtectedWaitForPowerOn"),
    start("Start - currentPowerState: %lld controller: %p timeout: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - currentPowerState: %lld waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&currentPowerState) - engine: %p waiters: %lld", a2, a3),
    sel(1, "ERROR: timed out - currentPowerState: %lld pendingPowerState: %lld", a2, a3),

    event(0x05245594, "protectedTerminateOrvelHDAEngine"),
    start("Start - engine: %p state: %lld isRunning: %s", a2, a3, boolean(a4)),
    end("End - engine: %p engines left: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "deferred until stopped - engine: %p", a2),

    event(0x05245598, "protectedOrvelHDAEngineStopped"),
    start("Start - engine: %p fEngineToTerminate: %p numRunningAudioEngines: %lld", a2, a3, a4),
    end("End - numRunningAudioEngines: %lld currentPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "terminating - engine: %p", a2),
    sel(1, "last engine stopped - timeout: %d.%03d.%03d.%03d", nanos(a2)),
};

}  // namespace

constexpr Decoder kHdaDriver = decoder<kDriverRows, "OrvelHDADriver">(audioClass(21), 30);

}  // namespace sonaprobe::decoders
