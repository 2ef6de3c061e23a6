// High-definition audio towards the jacks and displays: widgets and their pins, the display-port
// engine output, path sets (classes 27 to 29).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kWidgetRows[] = {
    event(0x05246C04, "initForNodeID"),
    verbose(start("Start - nodeID: %lld provider: %p codec: %p", a2, a3, a4)),
    verbose(end("End - fCurrentPowerState: %lld result: 0x%08x", a2, lo(a4))),  // arg4, as in the node's end texts

    event(0x05246CA4, "unsolictedCachePinSense"),  // sic
    verbose(start("Start - fType: %lld fPinCapabilities: 0x%llx fPinSenseCachedResponse: 0x%llx", a2, a3, a4)),
    verbose(end("End - fPinSenseCachedResponse: 0x%llx fCurrentPowerState: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "calling runVerb - kIOHDAVerbGetPinSense - fCurrentPowerState: %lld", a2)),

    event(0x05246CF0, "cachedPinSense"),
    start("Start - fType: %lld fPinCapabilities: 0x%x fPinSenseCachedResponse: 0x%x fNodeID: %lld", a2, hi(a3), lo(a3), a4),
    end("End - fNodeID: %lld result: 0x%08x", a2, lo(a4)),  // arg4, as in the node's end texts

    event(0x05246D34, "powerState"),
    start("Start - fNodeID: %lld fCurrentPowerState: %lld", a2, a3),
    end("End - fNodeID: %lld fCurrentPowerState: %lld result: 0x%llx", a2, a3, a4),
    sel(0, "calling in to fPowerDelegate: %p", named("fPowerDelegate", a2)),
    sel(1, "calling up to superclass"),

    event(0x05246D38, "setPowerState"),
    start("Start - fProvider: %p aPowerState: %d fCurrentPowerState: %d forcePowerState: %s", a2, hi(a3), lo(a3), boolean(a4)),
    end("End - fNodeID: %lld fCurrentPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x05246E30, "pinSense"),  // the verbs on its way print under runVerb
    start("Start - fNodeID: %lld fPinCapabilities: 0x%08x fCurrentPowerState: %d", a2, lo(a3), lo(a4)),
    end("End - fNodeID: %lld pinSense: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    under("runVerb", sel(0, "kIOHDAVerbGetPinSense - fNodeID: %lld response: 0x%08x result: 0x%08x", a2, hi(a3), lo(a3))),
    under("runVerb", sel(1, "kIOHDAVerbExecutePinSense - fNodeID: %lld fPinCapabilities: 0x%08x", a2, lo(a3))),

    event(0x05246E34, "pinSense"),  // of a jack that the codec behind the TDM bus watches
    start("Start - fNodeID: %lld fPinSenseCachedResponse: 0x%08x unsolicitedResponse: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - fNodeID: %lld fPinSenseCachedResponse: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    ofGroup("OrvelHDAWidgetCS4208", sel(0, "asking for headphones - tdmCodec: %p fNodeID: %lld", a2, a3)),
    ofGroup("OrvelHDAWidgetCS4208", sel(1, "asking for external mic - tdmCodec: %p fNodeID: %lld", a2, a3)),
    ofGroup("OrvelHDAWidgetCS4208", sel(2, "no TDM codec - fNodeID: %lld fPinSenseCachedResponse: 0x%08x", a2, lo(a3))),
};

constexpr Entry kEngineOutputDPRows[] = {
    event(0x05247000, "setPowerStateToSleep"),
    start("Start - fCurrentPowerState: %lld fEdidState: %lld fIsRunning: %s", a2, a3, boolean(a4)),
    end("End - fCurrentPowerState: %lld fIsRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "stopping engine - userClients: %lld", a2),
    sel(1, "sink gone - fEdidState: %lld pathSet: %p", a2, a3),

    event(0x05247004, "sleepFrameBuffer"),
    start("Start - fFrameBuffer: %p fCRTCIndex: %d fFrameBufferWakeCount: %lld", a2, lo(a3), a4),
    end("End - fFrameBuffer: %p fFrameBufferWakeCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "allowing power off - fFrameBuffer: %p fCRTCIndex: %d", a2, lo(a3)),
    sel(1, "staying awake for other engines - fFrameBuffer: %p fFrameBufferWakeCount: %lld", a2, a3),

    event(0x05247008, "stopHardware"),
    start("Start - stream: %p fIsRunning: %s fAudioOutputEnabled: %s", a2, boolean(a3), boolean(a4)),
    end("End - stream: %p fAudioOutputEnabled: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "silencing - fCRTCIndex: %d stream: %p", lo(a2), a3),
    sel(1, "ERROR: audio packets not stopped - fCRTCIndex: %d waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524700C, "performFormatChange"),
    start("Start - stream: %p sampleRate: %d bitsPerSample: %d channelCount: %d sampleFormat: 0x%08x", a2, hi(a3), lo(a3), hi(a4), lo(a4)),
    end("End - stream: %p sampleRate: %d channelCount: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "keeping format - sampleRate: %d channelCount: %d", lo(a2), lo(a3)),
    sel(1, "format not supported - sampleRate: %d -> %d channelCount: %d -> %d", hi(a2), named("new sampleRate", lo(a2)), hi(a3), named("new channelCount", lo(a3))),

    event(0x05247010, "handleEdidStateTransition_videoDidPowerOn"),
    start("Start - fCRTCIndex: %d fEdidState: %lld fPausedForVideo: %s", lo(a2), a3, boolean(a4)),
    end("End - fEdidState: %lld fIsRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "same sink - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "another sink - edidChecksum: 0x%02x -> 0x%02x", lo(a2), named("new edidChecksum", lo(a3))),
    sel(2, "no valid EDID - fCRTCIndex: %d fEdidState: %lld", lo(a2), a3),

    event(0x05247014, "setPowerStateToActive"),
    start("Start - fCurrentPowerState: %lld fEdidState: %lld fWakeNotificationPending: %s", a2, a3, boolean(a4)),
    end("End - fCurrentPowerState: %lld fEdidState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "waking - fFrameBuffer: %p pathSet: %p", a2, a3),
    sel(1, "video still off - fCRTCIndex: %d fCurrentPowerState: %lld", lo(a2), a3),

    event(0x05247018, "handleEdidStateTransition"),
    start("Start - fCRTCIndex: %d fEdidState: %lld newEdidState: %lld", lo(a2), a3, a4),
    end("End - oldEdidState: %lld fEdidState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no change - fEdidState: %lld fCRTCIndex: %d", a2, lo(a3)),
    sel(1, "ERROR: transition not allowed - fEdidState: %lld newEdidState: %lld", a2, a3),
    sel(2, "deferred until wake - newEdidState: %lld pending: %lld", a2, a3),

    event(0x0524701C, "performWakeNotifications"),
    start("Start - pending: %lld fEdidState: %lld fCurrentPowerState: %lld", a2, a3, a4),
    end("End - performed: %d dropped: %d fEdidState: %lld result: 0x%08x", hi(a2), lo(a2), a3, lo(a4)),
    sel(0, "performing - index: %lld newEdidState: %lld", a2, a3),
    sel(1, "replaced by a later one - index: %lld newEdidState: %lld", a2, a3),

    event(0x05247020, "handleEdidStateTransition_videoWillPowerOff"),
    start("Start - fCRTCIndex: %d fEdidState: %lld fIsRunning: %s", lo(a2), a3, boolean(a4)),
    end("End - fEdidState: %lld fPausedForVideo: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "pausing engine - userClients: %lld", a2),
    sel(1, "engine not running - fCRTCIndex: %d", lo(a2)),

    event(0x05247024, "handleEdidStateTransition_videoFormatWillChange"),
    start("Start - fCRTCIndex: %d fEdidState: %d sampleRate: %d channelCount: %d fIsRunning: %s", hi(a2), lo(a2), hi(a3), lo(a3), boolean(a4)),
    end("End - fEdidState: %lld fFormatChangePending: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "pausing engine - userClients: %lld", a2),
    sel(1, "change already pending - fCRTCIndex: %d count: %lld", lo(a2), a3),

    event(0x05247028, "handleVideoFormatChanged"),
    start("Start - fCRTCIndex: %d pixelClock(Hz): %llu fFormatChangePending: %s", lo(a2), a3, boolean(a4)),
    end("End - availableFormats: %lld fFormatChangePending: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "change not announced - fCRTCIndex: %d", lo(a2)),
    sel(1, "EDID invalid after change - fCRTCIndex: %d fEdidState: %lld", lo(a2), a3),

    event(0x0524702C, "enableAudioOutput"),
    start("Start - fCRTCIndex: %d enable: %s fAudioOutputEnabled: %s", lo(a2), boolean(a3), boolean(a4)),
    end("End - fCRTCIndex: %d fAudioOutputEnabled: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),
    sel(0, "ERROR: video mode without audio - fFrameBuffer: %p fCRTCIndex: %d", a2, lo(a3)),
    sel(1, "frame buffer busy - fFrameBuffer: %p attempt: %lld", a2, a3),
};

constexpr Entry kPathSetRows[] = {
    event(0x05247400, "setPowerState"),
    start("Start - fOrvelHDAPathArray: %p count: %lld", a2, a3),
    end("End - fOrvelHDAPathArray: %p count: %lld returning 0x%llx", a2, a3, named("returning", a4)),
    sel(0, "dry run through pathSet, index: %lld path: %p", a2, a3),
    sel(1, "active run through pathSet, index: %lld path: %p", a2, a3),

    event(0x05247404, "enable"),
    start("Start - stream: %p, channelConfig: %lld, context: %lld", a2, a3, a4),
    end("End - stream: %p, channelConfig: %lld, result: 0x%llx", a2, a3, a4),
    sel(0, "enabling - index: %lld path: %p", a2, a3),
    sel(1, "ERROR: disabling earlier paths - index: %lld path: %p returned: 0x%08x", a2, a3, hi(a4)),

    event(0x05247408, "disable"),
    start("Start"),
    end("End - result: 0x%llx", a4),  // arg4, as in the path's end texts

    event(0x0524740C, "initPathSetFromXML"),
    sel(0, "turning functionGroup: %p ON", named("functionGroup", a2)),
    sel(1, "putting functionGroup: %p back into power state: %lld", named("functionGroup", a2), named("power state", a3)),

    event(0x05247410, "setPathSetFormat"),
    sel(0, "turning functionGroup: %p ON", named("functionGroup", a2)),
    sel(1, "putting functionGroup: %p back into power state: %lld", named("functionGroup", a2), named("power state", a3)),
};

}  // namespace

constexpr Decoder kHdaWidget = decoder<kWidgetRows, "OrvelHDAWidget">(audioClass(27), 7);
// All events of the class are the display-port engine's, though the class list calls it the output.
constexpr Decoder kHdaEngineOutputDP = decoder<kEngineOutputDPRows, "OrvelHDAEngineOutputDP">(audioClass(28), 12);
constexpr Decoder kHdaPathSet = decoder<kPathSetRows, "OrvelHDAPathSet">(audioClass(29), 5);

}  // namespace sonaprobe::decoders
