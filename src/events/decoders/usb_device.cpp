// USB audio, the device (class 35): hardware set-up, power and shutdown, the status interrupt
// endpoint, and the anchor that ties USB frame numbers to host time.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kUsbDeviceRows[] = {
    event(0x05248C04, "free"),
    start("Start: mControlInterface: %p mAudioEngineArray: %p mTimeLock: %p", a2, a3, a4),
    end("End"),

    event(0x05248C1C, "protectedInitHardware"),
    start("Start: provider: %p currentPowerState: %lld", a2, a3),
    end("End: engines: %lld currentPowerState: %lld returning %s", a2, a3, named("returning", boolean(a4))),
    sel(0, "idVendor: 0x%04x idProduct: 0x%04x bcdDevice: 0x%04x mDeviceSpeed: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "opened - mControlInterface: %p bcdADC: 0x%04x bInCollection: %d", a2, hi(a3), lo(a3)),
    sel(2, "activating - engine: %p first bInterfaceNumber: %d last bInterfaceNumber: %d", a2, hi(a3), lo(a3)),
    sel(3, "ERROR: setting configuration - bConfigurationValue: %lld returned: 0x%08x", a2, lo(a3)),
    sel(4, "ERROR: no audio header - mControlInterface: %p wTotalLength: %d bLength: %d", a2, hi(a3), lo(a3)),

    event(0x05248C20, "checkForStatusInterruptEndpoint"),
    start("Start: mControlInterface: %p bNumEndpoints: %lld", a2, a3),
    end("End: mStatusInterruptPipe: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "interrupt endpoint: 0x%02x wMaxPacketSize: %d bInterval: %d", hi(a2), lo(a2), lo(a3)),
    sel(1, "not an interrupt endpoint - endpoint: 0x%02x bmAttributes: 0x%02x", lo(a2), lo(a3)),
    sel(2, "ERROR: no pipe - endpoint: 0x%02x", lo(a2)),

    event(0x05248C30, "handleStatusInterrupt"),
    start("Start: status: 0x%08x bytesTransferred: %lld mStatusInterruptPipe: %p", lo(a2), a3, a4),
    end("End: mStatusInterruptPipe: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "InterruptDataMessage: bInfo: 0x%x bAttribute: 0x%x wIndex: 0x%x wValue: 0x%x", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "updating controls - engine: %p entityID: %d bInterfaceNumber: %d", a2, hi(a3), lo(a3)),
    sel(2, "entity without engine - entityID: %d bInterfaceNumber: %d", lo(a2), lo(a3)),
    sel(3, "ERROR: clearing stall - status: 0x%08x attempt: %lld", lo(a2), a3),

    event(0x05248C38, "systemWillShutDown"),
    start("Start: specifier: 0x%llx mSuspendWioutAudio: %s currentPowerState: %lld", a2, boolean(a3), a4),  // sic: Wiout
    // The end's arg2 is the time until the acknowledgement, 0 where it is already given.
    end(nonZero(a2), "End: delaying ACK for power state change"),
    end("End: already acknowledged"),

    event(0x05248C40, "protectedCompletePowerStateChange"),
    start("Start: currentPowerState: %llu ---> %llu", a2, named("new currentPowerState", a3)),
    end("End: currentPowerState: %llu returning result: 0x%08x", a2, lo(a3)),
    sel(0, "going to sleep - engine: %p index: %lld", a2, a3),
    sel(1, "staying awake for running engine - engine: %p state: %lld", a2, a3),
    sel(2, "waking - mStatusInterruptPipe: %p mUpdateTimer: %p", a2, a3),
    sel(3, "ERROR: device request: %s returned: 0x%08x", either(a2, "resume", "suspend"), lo(a3)),

    event(0x05248C44, "stop"),
    start("Start: provider: %p currentPowerState: %lld numRunningAudioEngines: %lld", a2, a3, a4),
    end("End: mControlInterface: %p open clients: %lld", a2, a3),
    sel(0, "removing timer - mUpdateTimer: %p workLoop: %p", a2, a3),
    sel(1, "deactivating - engine: %p index: %lld", a2, a3),

    event(0x05248C48, "allEnginesStopped"),
    verbose(start("Start: mAudioEngineArray: %p count: %lld", a2, a3)),
    verbose(end("End: numRunningAudioEngines: %lld returning %s", a2, named("returning", boolean(a3)))),
    verbose(other("engine: %p index: %lld state: %lld", a2, a3, a4)),

    event(0x05248CB8, "closeControlInterface"),
    start("Start: mControlInterface: %p mStatusInterruptPipe: %p isInactive: %s", a2, a3, boolean(a4)),
    end("End: mControlInterface: %p mStatusInterruptPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "aborting - mStatusInterruptPipe: %p result: 0x%08x", a2, lo(a3)),
    sel(1, "already closed - mControlInterface: %p", a2),

    event(0x05248CD4, "doControlStuff"),
    start("Start: engine: %p bInterfaceNumber: %lld bAlternateSetting: %lld", a2, a3, a4),
    end("End: engine: %p controls: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "terminalID: %d wTerminalType: 0x%04x unitID: %d channelCount: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "unitID: %d channel: %d bmaControls: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(2, "volume - unitID: %d channel: %d GET_MIN(1/256 dB): %d GET_MAX(1/256 dB): %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(3, "selector - unitID: %d pin: %d bNrInPins: %d", hi(a2), lo(a2), lo(a3)),
    sel(4, "ERROR: control request - unitID: %d controlSelector: %d returned: 0x%08x", hi(a2), lo(a2), lo(a3)),

    event(0x05248DAC, "willTerminate"),
    start("Start: provider: %p options: 0x%llx currentPowerState: %lld", a2, a3, a4),
    end("End: provider: %p numRunningAudioEngines: %lld returning %s", a2, a3, named("returning", boolean(a4))),
    other("stopping - engine: %p index: %lld state: %lld", a2, a3, a4),

    event(0x05248DD8, "getAnchorFrameAndTimeStamp"),
    start("Start: mTimeLock: %p mAnchorResetPending: %s", a2, boolean(a3)),
    end("End: anchorFrame: %lld anchorTime: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "frame changed during clock read - frameNumber: %lld ---> %lld", a2, named("new frameNumber", a3)),
    sel(1, "ERROR: getFrameNumber returned: 0x%08x anchorFrame: %lld", lo(a2), a3),

    event(0x05248DE4, "updateUSBCycleTime"),
    verbose(start("Start: mWallTimePerUSBCycle: %lld updates: %lld", a2, a3)),
    verbose(end("End: mWallTimePerUSBCycle: %lld change: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "processing frameNumber: %lld timeStamp: %d.%03d.%03d.%03d", a2, nanos(a3))),
    verbose(sel(1, "mAnchorTime.n: %lld mWallTimePerUSBCycle: %lld", a2, a3)),
    verbose(sel(2, "mAnchorTime.n: %lld mTimeLock: %p", a2, a3)),
    sel(3, "ERROR: frame number going back - last frameNumber: %lld frameNumber: %lld", a2, a3),

    event(0x05248DFC, "doTimerAction"),
    start("Start: mUpdateTimer: %p currentPowerState: %lld isInactive: %s", a2, a3, boolean(a4)),
    end("End: mUpdateTimer: %p timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),
    other("ERROR: updateUSBCycleTime returned: 0x%08x failures: %lld", lo(a2), a3),

    event(0x05248E00, "formatChangeController"),
    start("Start: engine: %p stream: %p sampleRate: %d ---> %d", a2, a3, hi(a4), named("new sampleRate", lo(a4))),
    end("End: engine: %p sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "pausing - engine: %p state: %lld", a2, a3),
    sel(1, "clock shared - engine: %p sampleRate: %d ---> %d", a2, hi(a3), named("new sampleRate", lo(a3))),
    sel(2, "resuming - engine: %p state: %lld", a2, a3),
    sel(3, "ERROR: restoring format - engine: %p returned: 0x%08x sampleRate: %d", a2, hi(a3), lo(a3)),
};

}  // namespace

constexpr Decoder kUsbDevice = decoder<kUsbDeviceRows, "OrvelUSBAudioDevice">(audioClass(35), 15);

}  // namespace sonaprobe::decoders
