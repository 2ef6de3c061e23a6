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
    end("End: engines: %lld currentPowerState: %lld returning %s", a2, a3, boolean(a4)),
    sel(0, "idVendor: 0x%04x idProduct: 0x%04x bcdDevice: 0x%04x mDeviceSpeed: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "opened mControlInterface: %p bcdADC: 0x%04x bInCollection: %d", a2, hi(a3), lo(a3)),
    sel(2, "activating engine: %p for interfaces %d to %d", a2, hi(a3), lo(a3)),
    sel(3, "ERROR: configuring with bConfigurationValue: %lld returned: 0x%08x", a2, lo(a3)),
    sel(4, "ERROR: mControlInterface: %p has no usable audio header - wTotalLength: %d bLength: %d", a2, hi(a3), lo(a3)),

    event(0x05248C20, "checkForStatusInterruptEndpoint"),
    start("Start: mControlInterface: %p bNumEndpoints: %lld", a2, a3),
    end("End: mStatusInterruptPipe: %p returning result: 0x%08x", a2, lo(a3)),
    sel(0, "found interrupt endpoint: 0x%02x wMaxPacketSize: %d bInterval: %d", hi(a2), lo(a2), lo(a3)),
    sel(1, "endpoint: 0x%02x bmAttributes: 0x%02x is not an interrupt endpoint - skipping", hi(a2), lo(a2)),
    sel(2, "ERROR: no pipe for endpoint: 0x%02x - changes on the device will go unnoticed", lo(a2)),

    event(0x05248C30, "handleStatusInterrupt"),
    start("Start: status: 0x%08x bytesTransferred: %lld mStatusInterruptPipe: %p", lo(a2), a3, a4),
    end("End: next read on mStatusInterruptPipe: %p returned: 0x%08x", a2, lo(a3)),
    sel(0, "InterruptDataMessage: bInfo: 0x%x bAttribute: 0x%x wIndex: 0x%x wValue: 0x%x", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "engine: %p owns entity ID: %d on interface: %d - updating its controls", a2, hi(a3), lo(a3)),
    sel(2, "no engine owns entity ID: %d on interface: %d - dropping message", hi(a2), lo(a2)),
    sel(3, "ERROR: read ended with status: 0x%08x - clearing stall, attempt: %lld", lo(a2), a3),

    event(0x05248C38, "systemWillShutDown"),
    start("Start: specifier: 0x%llx mSuspendWioutAudio: %s currentPowerState: %lld", a2, boolean(a3), a4),  // sic: Wiout
    // The end's arg2 is the time until the acknowledgement, 0 where it is already given.
    end(nonZero(a2), "End: delaying ACK for power state change"),
    end("End: already acknowledged"),

    event(0x05248C40, "protectedCompletePowerStateChange"),
    start("Start: currentPowerState: %llu ---> %llu", a2, a3),
    end("End: currentPowerState: %llu returning result: 0x%08x", a2, lo(a3)),
    sel(0, "going to sleep - engine: %p index: %lld has stopped", a2, a3),
    sel(1, "going to sleep - engine: %p state: %lld is still running, device stays awake", a2, a3),
    sel(2, "waking - restarting mStatusInterruptPipe: %p and mUpdateTimer: %p", a2, a3),
    sel(3, "ERROR: could not %s the device: 0x%08x", either(a2, "resume", "suspend"), lo(a3)),

    event(0x05248C44, "stop"),
    start("Start: provider: %p currentPowerState: %lld numRunningAudioEngines: %lld", a2, a3, a4),
    end("End: mControlInterface: %p open clients: %lld", a2, a3),
    sel(0, "removing mUpdateTimer: %p from work loop: %p", a2, a3),
    sel(1, "deactivating engine: %p index: %lld", a2, a3),

    event(0x05248C48, "allEnginesStopped"),
    verbose(start("Start: mAudioEngineArray: %p count: %lld", a2, a3)),
    verbose(end("End: numRunningAudioEngines: %lld returning %s", a2, boolean(a3))),
    verbose(other("engine: %p index: %lld state: %lld", a2, a3, a4)),

    event(0x05248CB8, "closeControlInterface"),
    start("Start: mControlInterface: %p mStatusInterruptPipe: %p isInactive: %s", a2, a3, boolean(a4)),
    end("End: mControlInterface: %p mStatusInterruptPipe: %p", a2, a3),
    sel(0, "aborting mStatusInterruptPipe: %p returned: 0x%08x", a2, lo(a3)),
    sel(1, "mControlInterface: %p is not open - nothing to close", a2),

    event(0x05248CD4, "doControlStuff"),
    start("Start: engine: %p bInterfaceNumber: %lld bAlternateSetting: %lld", a2, a3, a4),
    end("End: engine: %p controls: %lld returning result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "terminal ID: %d wTerminalType: 0x%04x is controlled by feature unit ID: %d channels: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "feature unit ID: %d channel: %d bmaControls: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(2, "volume control of unit ID: %d channel: %d ranges from %d to %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(3, "selector unit ID: %d is set to pin: %d of %d", hi(a2), lo(a2), lo(a3)),
    sel(4, "ERROR: unit ID: %d control selector: %d did not answer: 0x%08x - leaving it out", hi(a2), lo(a2), lo(a3)),

    event(0x05248DAC, "willTerminate"),
    start("Start: provider: %p options: 0x%llx currentPowerState: %lld", a2, a3, a4),
    end("End: provider: %p numRunningAudioEngines: %lld returning %s", a2, a3, boolean(a4)),
    other("device is gone - stopping engine: %p index: %lld state: %lld", a2, a3, a4),

    event(0x05248DD8, "getAnchorFrameAndTimeStamp"),
    start("Start: mTimeLock: %p mAnchorResetPending: %s", a2, boolean(a3)),
    end("End: anchorFrame: %lld anchorTime: %d.%03d.%03d.%03d returning result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "frame number went from %lld to %lld around the clock read - reading again", a2, a3),
    sel(1, "ERROR: bus gave no frame number: 0x%08x - keeping anchor at frame: %lld", lo(a2), a3),

    event(0x05248DE4, "updateUSBCycleTime"),
    verbose(start("Start: mWallTimePerUSBCycle: %lld updates since reset: %lld", a2, a3)),
    verbose(end("End: mWallTimePerUSBCycle: %lld change: %lld returning result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "processing frameNumber: %lld timeStamp: %d.%03d.%03d.%03d", a2, nanos(a3))),
    verbose(sel(1, "mAnchorTime.n: %lld mWallTimePerUSBCycle: %lld", a2, a3)),
    verbose(sel(2, "mAnchorTime.n: %lld mTimeLock: %p", a2, a3)),
    sel(3, "ERROR: frameNumber: %lld is not behind the last one: %lld - starting a new anchor", a2, a3),

    event(0x05248DFC, "doTimerAction"),
    start("Start: mUpdateTimer: %p currentPowerState: %lld isInactive: %s", a2, a3, boolean(a4)),
    end("End: mUpdateTimer: %p fires again in %d.%03d.%03d.%03d", a2, nanos(a3)),
    other("ERROR: no new USB cycle time: 0x%08x failed updates in a row: %lld", lo(a2), a3),

    event(0x05248E00, "formatChangeController"),
    start("Start: engine: %p stream: %p sampleRate: %d ---> %d", a2, a3, hi(a4), lo(a4)),
    end("End: engine: %p sampleRate: %lld returning result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "pausing engine: %p state: %lld", a2, a3),
    sel(1, "engine: %p shares the clock - sampleRate: %d ---> %d", a2, hi(a3), lo(a3)),
    sel(2, "resuming engine: %p state: %lld", a2, a3),
    sel(3, "ERROR: engine: %p refused the format: 0x%08x - going back to sampleRate: %d", a2, hi(a3), lo(a3)),
};

}  // namespace

constexpr Decoder kUsbDevice = decoder<kUsbDeviceRows, "OrvelUSBAudioDevice">(audioClass(35), 15);

}  // namespace sonaprobe::decoders
