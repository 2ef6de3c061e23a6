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
    end("End - output engines: %d input engines: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "turning functionGroup: %p ON", a2),
    sel(1, "putting functionGroup: %p back into power state: %lld", a2, a3),
    sel(2, "no path to pin nodeID: %lld defaultConfiguration: 0x%08x", a2, lo(a3)),

    event(0x05245414, "protectedRunPeriodicTasks"),
    start("Start - currentPowerState: %lld numRunningAudioEngines: %lld idle for: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - currentPowerState: %lld next run in: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(0, "pin nodeID: %lld sense went from 0x%08x to 0x%08x without an interrupt", a2, hi(a3), lo(a3)),
    sel(1, "idle for %d.%03d.%03d.%03d - asking for powerState: %lld", nanos(a2), a3),

    event(0x05245454, "startDMAEngine"),
    start("Start - engine: %p stream: %p currentPowerState: %lld", a2, a3, a4),
    end("End - engine: %p stream: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engine: %p has to wait for power - currentPowerState: %lld", a2, a3),
    sel(1, "stream: %p is on DMA channel: %d with tag: %d", a2, hi(a3), lo(a3)),

    event(0x05245478, "createAudioOutputEngine"),
    start("Start - %s output, pathSets: %lld codecAddress: %d", either(a2, "External", "Internal"), a3, lo(a4)),
    end("End - engine: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "%s pathSet: %p added, pin nodeID: %d", either(a2, "External", "Internal"), a3, hi(a4)),
    sel(1, "%s output has no pathSet that can be enabled, candidates: %lld", either(a2, "External", "Internal"), a3),

    event(0x0524547C, "createAudioOutputEngineDP"),
    start("Start - framebuffer: %p fCRTCIndex(%d) pin nodeID: %d", a2, lo(a3), lo(a4)),
    end("End - engine: %p fCRTCIndex(%d) result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "fCRTCIndex(%d) has no valid EDID yet - engine: %p stays inactive", lo(a2), a3),

    event(0x0524548C, "deactivateAudioEngine"),
    start("Start - %s engine: %p isRunning: %s", either(a2, "External", "Internal"), a3, boolean(a4)),
    end("End - engine: %p active engines left: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engine: %p still has clients: %lld", a2, a3),

    event(0x0524549C, "destructExtOutputEngine"),
    start("Start - fExtOutputEngine: %p isRunning: %s userClients: %lld", a2, boolean(a3), a4),
    end("End - fExtOutputEngine: %p output goes to %s", a2, either(a3, "External", "Internal")),
    sel(0, "fExtOutputEngine: %p is running - stopping stream: %p first", a2, a3),

    event(0x052454AC, "performPowerStateChange"),
    start("Start - oldPowerState: %lld newPowerState: %lld numRunningAudioEngines: %lld", a2, a3, a4),
    end("End - newPowerState: %lld microsecondsUntilComplete: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x052454B0, "protectedPowerChangeAction"),
    start("Start - oldPowerState: %lld newPowerState: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End - currentPowerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "going to sleep/0 - numRunningAudioEngines: %lld", a2),
    sel(1, "going to idle/1 - numRunningAudioEngines: %lld", a2),
    sel(2, "going to active/2 - engines to resume: %lld", a2),
    sel(3, "currentPowerState is %lld already - telling nobody", a2),

    event(0x052454B4, "protectedPowerChange_active"),
    start("Start - oldPowerState: %lld fAudioFunctionGroup: %p afgPowerState: %lld", a2, a3, a4),
    end("End - engines resumed: %d of %d result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "turning functionGroup: %p ON (D0)", a2),
    sel(1, "functionGroup: %p lost its settings - restoring widgets: %lld", a2, a3),

    event(0x052454B8, "protectedPowerChange_idle"),
    start("Start - oldPowerState: %lld numRunningAudioEngines: %lld keepFunctionGroupOn: %s", a2, a3, boolean(a4)),
    end("End - afgPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "engine: %p is running - functionGroup: %p stays ON", a2, a3),
    sel(1, "nothing is running - putting functionGroup: %p into afgPowerState: %lld", a2, a3),

    event(0x052454BC, "protectedPowerChange_sleep"),
    start("Start - oldPowerState: %lld engines to pause: %lld fUnsolicitedEnabled: %s", a2, a3, boolean(a4)),
    end("End - engines paused: %lld afgPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engine: %p does not pause - state: %lld", a2, a3),
    sel(1, "muting amplifier nodeID: %lld before functionGroup: %p loses power", a2, a3),

    event(0x052454C0, "dispatchPowerStateToEngines"),
    start("Start - powerState: %lld engines: %lld", a2, a3),
    end("End - powerState: %lld refused by: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "index: %lld engine: %p powerState: %d", a2, a3, hi(a4)),
    sel(1, "engine: %p refused powerState: %d returning 0x%08x", a2, hi(a3), lo(a3)),

    event(0x052454C4, "setPowerStateToActive"),
    start("Start"),
    end("End - currentPowerState: %lld waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "leaving currentPowerState: %lld because of engine: %p", a2, a3),

    event(0x052454D4, "setAggressiveness"),  // the system repeats it for every type, so only a new delay is ungated
    verbose(start("Start - type: %lld newLevel: %lld fAggressiveness: %lld", a2, a3, a4)),
    verbose(end("End - fAggressiveness: %lld result: 0x%08x", a2, lo(a3))),
    sel(0, "idle delay going from %d.%03d.%03d.%03d to %d.%03d.%03d.%03d", nanos(a2), nanos(a3)),

    event(0x052454F8, "dispatchPowerStateToOrvelPimletDriver"),
    start("Start - fOrvelPimletDriver: %p powerState: %lld currentPowerState: %lld", a2, a3, a4),
    end("End - powerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "no headset remote driver to tell about powerState: %lld", a2),

    event(0x052454FC, "sendMessageToOrvelPimletDriver"),
    start("Start - fOrvelPimletDriver: %p message: 0x%08x argument: %p", a2, lo(a3), a4),
    end("End - message: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "message: 0x%08x dropped - no headset remote driver published, argument: %p", lo(a2), a3),
    sel(1, "message: 0x%08x kept until power is on - currentPowerState: %lld", lo(a2), a3),

    event(0x05245510, "message"),
    start("Start - type: 0x%08x codec: %p currentPowerState: %lld", lo(a2), a3, a4),
    end("End - type: 0x%08x handled: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "unsolicited response: 0x%08x is from pin nodeID: %lld", lo(a2), a3),
    sel(1, "unsolicited response: 0x%08x has a tag that nobody registered: %lld", lo(a2), a3),
    sel(2, "codec: %p is going away - engines to terminate: %lld", a2, a3),

    event(0x05245518, "handleValidEDIDAction"),
    start("Start - fCRTCIndex(%d) engine: %p currentPowerState: %lld", lo(a2), a3, a4),
    end("End - fCRTCIndex(%d) formats: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "fCRTCIndex(%d) sink takes sampleRate: %d channelCount: %d", lo(a2), hi(a3), lo(a3)),
    sel(1, "fCRTCIndex(%d) sink has no audio - deactivating engine: %p", lo(a2), a3),

    event(0x0524551C, "handleVideoFormatChangeAction"),
    start("Start - fCRTCIndex(%d) engine: %p isRunning: %s", lo(a2), a3, boolean(a4)),
    end("End - fCRTCIndex(%d) engine resumed: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "fCRTCIndex(%d) pausing engine: %p until the display has its new format", lo(a2), a3),
    sel(1, "fCRTCIndex(%d) sampleRate: %d no longer fits the video format, falling back to %d", lo(a2), hi(a3), lo(a3)),

    event(0x05245520, "handleInvalidEDID"),
    start("Start - fCRTCIndex(%d) framebuffer: %p engine: %p", lo(a2), a3, a4),
    end("End - fCRTCIndex(%d) engine deactivated: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "fCRTCIndex(%d) lost its display while engine: %p was running", lo(a2), a3),

    event(0x05245524, "handleValidEDID"),
    start("Start - fCRTCIndex(%d) framebuffer: %p EDID length: %lld", lo(a2), a3, a4),
    end("End - fCRTCIndex(%d) result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "fCRTCIndex(%d) EDID is the one we know - engine: %p stays as it is", lo(a2), a3),
    sel(1, "fCRTCIndex(%d) asleep, handleValidEDIDAction follows on wake - currentPowerState: %lld", lo(a2), a3),

    event(0x05245528, "handleVideoFormatChange"),
    start("Start - fCRTCIndex(%d) framebuffer: %p pixelClock: %llu", lo(a2), a3, a4),
    end("End - fCRTCIndex(%d) pixelClock: %llu result: 0x%08x", lo(a2), a3, lo(a4)),
    sel(0, "fCRTCIndex(%d) has no engine to adjust - pixelClock: %llu", lo(a2), a3),

    event(0x05245554, "updateCachedPinSenseForSinkDevice"),
    start("Start - pin nodeID: %lld fPinSenseCachedResponse: 0x%08x", a2, lo(a3)),
    end("End - pin nodeID: %lld fPinSenseCachedResponse: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "pin nodeID: %lld sink present: %s ELD valid: %s", a2, boolean(hi(a3)), boolean(lo(a3))),
    sel(1, "pin nodeID: %lld cannot be asked in afgPowerState: %lld - keeping the cached response", a2, a3),

    event(0x05245584, "setPowerState"),
    start("Start - powerStateOrdinal: %lld device: %p currentPowerState: %lld", a2, a3, a4),
    end("End - powerStateOrdinal: %lld currentPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x05245588, "protectedSetPowerState"),
    start("Start - powerStateOrdinal: %lld pendingPowerState: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End - currentPowerState: %lld pendingPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "going to sleep/0 - currentPowerState: %lld numRunningAudioEngines: %lld", a2, a3),
    sel(1, "going to wake/1 - currentPowerState: %lld engines to resume: %lld", a2, a3),

    event(0x0524558C, "waitForPendingPowerStateChange"),
    start("Start - asyncPowerStateChangeInProgress: %s currentPowerState: %lld pendingPowerState: %lld", boolean(a2), a3, a4),
    end("End - asyncPowerStateChangeInProgress: %s waited: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&asyncPowerStateChangeInProgress) - pendingPowerState: %lld", a2),

    event(0x05245590, "ProtectedWaitForPowerOn"),
    start("Start - currentPowerState: %lld controller: %p timeout: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - currentPowerState: %lld waited for power: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&currentPowerState) on behalf of engine: %p - waiters: %lld", a2, a3),
    sel(1, "timed out - currentPowerState: %lld pendingPowerState: %lld", a2, a3),

    event(0x05245594, "protectedTerminateOrvelHDAEngine"),
    start("Start - engine: %p state: %lld isRunning: %s", a2, a3, boolean(a4)),
    end("End - engine: %p engines left: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "engine: %p is running - terminating it in protectedOrvelHDAEngineStopped", a2),

    event(0x05245598, "protectedOrvelHDAEngineStopped"),
    start("Start - engine: %p fEngineToTerminate: %p numRunningAudioEngines: %lld", a2, a3, a4),
    end("End - numRunningAudioEngines: %lld currentPowerState: %lld", a2, a3),
    sel(0, "engine: %p was only waiting for this - terminating it", a2),
    sel(1, "last engine stopped - idle in %d.%03d.%03d.%03d", nanos(a2)),
};

}  // namespace

constexpr Decoder kHdaDriver = decoder<kDriverRows, "OrvelHDADriver">(audioClass(21), 30);

}  // namespace sonaprobe::decoders
