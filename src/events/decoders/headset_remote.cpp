// The headset remote: jack, microphone and button detection, in the chip and behind an HDA codec
// (class 44).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kPimletRows[] = {
    event(0x0524B000, "EnableHPDetect"),
    start("Start enable: %s fHPDetectEnabled: %s fHeadsetType: %d", boolean(a2), boolean(a3), lo(a4)),
    end("End fHPDetectEnabled: %s result: 0x%08x", boolean(a2), lo(a3)),

    event(0x0524B004, "EnableHPDetect"),  // the register write of the same method
    other("hpDetectControl: 0x%02x -> 0x%02x plugDebounce: %d.%03d.%03d.%03d unplugDebounce: %d.%03d.%03d.%03d", hi(a2), named("new hpDetectControl", lo(a2)), nanos(a3), nanos(a4)),

    event(0x0524B008, "Reset"),
    start("Start fHeadsetType: %d fPowerMode: %d fInterruptMask: 0x%04x", lo(a2), lo(a3), lo(a4)),
    end("End revisionID: 0x%02x result: 0x%08x", lo(a2), lo(a3)),

    event(0x0524B00C, "EnableLatchToVCCMain"),
    start("Start detectCtl1: 0x%02x wakeMask: 0x%02x", lo(a2), lo(a3)),
    end("End fLatchedToVCCMain: %s result: 0x%08x", boolean(a2), lo(a3)),

    event(0x0524B010, "DisableLatchToVCCMain"),
    start("Start fLatchedToVCCMain: %s wakeOutput: 0x%02x", boolean(a2), lo(a3)),
    end("End detectCtl1: 0x%02x latched detectCtl1: 0x%02x result: 0x%08x", lo(a2), lo(a3), lo(a4)),

    event(0x0524B014, "GetShortDetect"),
    other("shortDetected: %s shortReleased: %s micLevel: %d", boolean(a2), boolean(a3), lo(a4)),

    event(0x0524B018, "GetStatusMicDetect"),
    other("shortStatus: %d  micStatus: %d", lo(a2), lo(a3)),  // blanks as they are

    event(0x0524B01C, "GetAckButtonDetect"),
    other("pressed: %d  released: %d", lo(a2), lo(a3)),  // blanks as they are

    event(0x0524B020, "SetInterruptMask"),
    start("Start fInterruptMask: 0x%04x -> 0x%04x fHeadsetType: %d", lo(a2), named("new fInterruptMask", lo(a3)), lo(a4)),
    end("End fInterruptMask: 0x%04x unmasked: 0x%04x result: 0x%08x", lo(a2), lo(a3), lo(a4)),

    event(0x0524B024, "ClearPendingInterrupts"),
    start("Start pending: 0x%04x fInterruptMask: 0x%04x", lo(a2), lo(a3)),
    end("End pending: 0x%04x reads: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),

    event(0x0524B028, "ConfigureMicDetect"),
    start("Start fHeadsetType: %d detectMode: %d micLevel: %d", lo(a2), lo(a3), lo(a4)),
    end("End detectCtl1: 0x%02x fMicDetectEnabled: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),

    event(0x0524B02C, "ConfigurePowerMode"),
    start("Start powerMode: %d fPowerMode: %d fHeadsetType: %d", lo(a2), lo(a3), lo(a4)),
    end("End fPowerMode: %d result: 0x%08x", lo(a2), lo(a3)),

    event(0x0524B030, "ConfigurePowerMode2"),
    other("headset bias(mV): %d -> %d timeout: %d.%03d.%03d.%03d", lo(a2), named("new bias", lo(a3)), nanos(a4)),

    event(0x0524B034, "ConfigurePowerMode3"),
    other("detectCtl1: 0x%02x -> 0x%02x detectCtl2: 0x%02x -> 0x%02x", hi(a2), named("new detectCtl1", lo(a2)), hi(a3), named("new detectCtl2", lo(a3))),

    event(0x0524B038, "ConfigurePowerMode4"),
    other("wakeMask: 0x%02x -> 0x%02x fInterruptMask: 0x%04x fLatchedToVCCMain: %s", hi(a2), named("new wakeMask", lo(a2)), lo(a3), boolean(a4)),

    event(0x0524B03C, "_setDetectCtl1"),
    start("Start detectCtl1: 0x%02x -> 0x%02x changed: 0x%02x", lo(a2), named("new detectCtl1", lo(a3)), lo(a4)),
    end("End written: 0x%02x read: 0x%02x result: 0x%08x", lo(a2), lo(a3), lo(a4)),

    event(0x0524B040, "ConfigureHSSwitch"),
    start("Start wiring: %s switchCtl: 0x%02x -> 0x%02x", either(a2, "ReverseHeadset", "NormalHeadset"), lo(a3), named("new switchCtl", lo(a4))),
    end("End fReverseHeadset: %s result: 0x%08x", boolean(a2), lo(a3)),

    event(0x0524B054, "Interrupt"),
    other("pending: 0x%04x fInterruptMask: 0x%04x fHeadsetType: %d fPowerMode: %d", lo(a2), lo(a3), hi(a4), lo(a4)),

    event(0x0524B05C, "HeadsetIDStatus"),
    other("headsetID: 0x%llx valid: %s attempts: %d", a2, boolean(a3), lo(a4)),

    event(0x0524B078, "ReadStatus"),
    other("hpIntStatus: 0x%02x hpButtonIntStatus: 0x%02x detectIntStatus1: 0x%02x detectIntStatus2: 0x%02x", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x0524B07C, "ReadStatus2"),
    other("pending: 0x%04x fInterruptMask: 0x%04x lineAsserted: %s", lo(a2), lo(a3), boolean(a4)),

    event(0x0524B080, "DetectCtl1"),
    other("detectCtl1: 0x%02x detectMode: %d biasMode: %d", lo(a2), lo(a3), lo(a4)),

    event(0x0524B084, "DetectCtl2"),
    other("detectCtl2: 0x%02x switchMode: %d comparator1Ref: %d comparator2Ref: %d", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x0524B088, "DetectCtl3"),
    other("detectCtl3: 0x%02x autoDetectTime: %d.%03d.%03d.%03d buttonDebounce: %d.%03d.%03d.%03d", lo(a2), nanos(a3), nanos(a4)),

    event(0x0524B08C, "CurrentSenseCtl"),
    other("currentSenseCtl: 0x%02x tripLevel: %d senseEnabled: %s autoClampEnabled: %s", hi(a2), lo(a2), boolean(a3), boolean(a4)),

    event(0x0524B090, "SetMicLevelDetect"),
    start("Start micLevel: %d -> %d enable: %s", lo(a2), named("new micLevel", lo(a3)), boolean(a4)),
    end("End micLevelDetect: 0x%02x result: 0x%08x", lo(a2), lo(a3)),

    event(0x0524B094, "GetMicLevelDetect"),
    other("micLevelDetect: 0x%02x micLevel: %d crossed: %s", lo(a2), lo(a3), boolean(a4)),

    event(0x0524B098, "HPIntStatus"),
    other("hpIntStatus: 0x%02x plugged: %s unplugged: %s", lo(a2), boolean(a3), boolean(a4)),

    event(0x0524B09C, "HPButtonIntStatus"),
    other("hpButtonIntStatus: 0x%02x buttons: 0x%x -> 0x%x txAck: %s", lo(a2), hi(a3), named("new buttons", lo(a3)), boolean(a4)),

    event(0x0524B0A0, "DetectIntStatus1"),
    other("detectIntStatus1: 0x%02x currentSenseTripped: %s detectionDone: %s", lo(a2), boolean(a3), boolean(a4)),

    event(0x0524B0A4, "DetectIntStatus2"),
    other("detectIntStatus2: 0x%02x shortDetected: %s micDetected: %s", lo(a2), boolean(a3), boolean(a4)),

    event(0x0524B0A8, "DetectInterruptMask1"),
    other("detectInterruptMask1: 0x%02x -> 0x%02x currentSense: %s detectionDone: %s", hi(a2), named("new detectInterruptMask1", lo(a2)), either(a3, "masked", "unmasked"), either(a4, "masked", "unmasked")),

    event(0x0524B0AC, "DetectInterruptMask2"),
    other("detectInterruptMask2: 0x%02x -> 0x%02x short: %s mic: %s", hi(a2), named("new detectInterruptMask2", lo(a2)), either(a3, "masked", "unmasked"), either(a4, "masked", "unmasked")),

    event(0x0524B0B0, "WakeOutput"),
    other("wakeOutput: 0x%02x headphones: %s mic: %s", lo(a2), boolean(a3), boolean(a4)),

    event(0x0524B0B4, "WakeMask"),
    other("wakeMask: 0x%02x -> 0x%02x headphones: %s mic: %s", hi(a2), named("new wakeMask", lo(a2)), boolean(a3), boolean(a4)),

    event(0x0524B0B8, "HPDetectControl"),
    other("hpDetectControl: 0x%02x enabled: %s plugDebounce: %d.%03d.%03d.%03d unplugDebounce: %d.%03d.%03d.%03d", lo(a2), boolean(a3), nanos(hi(a4)), nanos(lo(a4))),

    event(0x0524B0BC, "StartMicDetectGated"),
    start("Start fHeadsetType: %d fMicDetectState: %d fReverseHeadset: %s", lo(a2), lo(a3), boolean(a4)),
    end("End fMicDetectState: %d timeout: %d.%03d.%03d.%03d result: 0x%08x", lo(a2), nanos(a3), lo(a4)),

    event(0x0524B0C0, "ContinueMicDetectGated"),
    start("Start fMicDetectState: %d micDetected: %s fMicDetectRetries: %d", lo(a2), boolean(a3), lo(a4)),
    end("End fMicDetectState: %d timeout: %d.%03d.%03d.%03d result: 0x%08x", lo(a2), nanos(a3), lo(a4)),

    event(0x0524B0C4, "DisableMicDetectGated"),
    start("Start fMicDetectState: %d timerArmed: %s", lo(a2), boolean(a3)),
    end("End biasEnabled: %s result: 0x%08x", boolean(a2), lo(a3)),

    event(0x0524B0C8, "SetHeadsetType"),
    value(1, "HeadsetTypeDetached"),
    value(2, "HeadsetTypePimlet"),
    value(3, "HeadsetTypeHeadphonesOnly"),
    value(4, "HeadsetTypeHeadphonesWaiting"),
    value(5, "HeadsetTypeSingleButton"),
    value(6, "HeadsetTypeMicOpen"),
    value(7, "HeadsetTypeWaitingForMic"),
    other("HeadsetTypeUNKNOWN"),

    event(0x0524B0CC, "ConfigurePimlet"),
    value(1, "HeadsetHasPimlet"),
    value(2, "HeadsetHasButton"),
    value(3, "HeadsetTypeHeadhponesWaiting"),  // sic
    value(4, "HeadsetTypeWaitingForMic OR HeadsetTypeMicOpen"),
    value(5, "Default"),

    event(0x0524B0D0, "HandleTXAckInterrupt"),
    start("Start fTXAckPending: %s fTXCommand: 0x%02x", boolean(a2), lo(a3)),
    end("End fTXAckPending: %s headsetID: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4)),

    event(0x0524B0D4, "HandleTXAckInterrupt"),  // the acknowledge that was waited for
    other("fTXCommand: 0x%02x elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524B0D8, "MicDetectInterrupt"),
    other("micDetected: %s fMicDetectState: %d fHeadsetType: %d", boolean(a2), lo(a3), lo(a4)),

    event(0x0524B0DC, "HandleButtonInterrupt"),
    start("Start fHeadsetType: %d fButtonsHeld: 0x%x", lo(a2), lo(a3)),
    end("End fButtonsHeld: 0x%x clients: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    other("ButtonInterruptStatus: 0x%llx", a2),

    event(0x0524B0E0, "HandleShortInterrupt"),
    start("Start shortDetected: %s micDetected: %s fHeadsetType: %d", boolean(a2), boolean(a3), lo(a4)),
    end("End single button: %s elapsed: %d.%03d.%03d.%03d result: 0x%08x", either(a2, "pressed", "released"), nanos(a3), lo(a4)),

    event(0x0524B0E4, "HandleDetachInterrupt"),
    start("Start fHeadsetType: %d fMicDetectState: %d fButtonsHeld: 0x%x", lo(a2), lo(a3), lo(a4)),
    end("End releasedButtons: 0x%x fHPDetectEnabled: %s result: 0x%08x", lo(a2), boolean(a3), lo(a4)),

    event(0x0524B0E8, "DetectHeadsetSwitch"),
    start("Start fHeadsetType: %d fReverseHeadset: %s", lo(a2), boolean(a3)),
    end("End headsetSwitch: %d switchCtl: 0x%02x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(1, "normal wiring - comparator1: %d comparator2: %d", lo(a2), lo(a3)),
    sel(2, "reverse wiring - comparator1: %d comparator2: %d", lo(a2), lo(a3)),

    event(0x0524B0EC, "EnableMicDetectGated"),
    start("Start fMicDetectEnabled: %s fPowerMode: %d fHeadsetType: %d", boolean(a2), lo(a3), lo(a4)),
    end("End fMicDetectEnabled: %s detectInterruptMask2: 0x%02x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),

    event(0x0524B0F0, "StartMicDetectGated2"),
    value(1, "HeadsetSwitch -- Inconclusive"),
    value(2, "HeadsetSwitch -- NormalHeadset and InfoButtonKey"),
    value(3, "HeadsetSwitch -- NormalHeadset"),
    value(4, "HeadsetSwitch -- ReverseHeadset"),
    value(5, "Else"),

    event(0x0524B258, "HDAPublishHeadsetID"),
    start("Start ID:%llx type:%llx publishedID:%llx", a2, a3, a4),
    end("End publishedID:%llx result:0x%08x", a2, lo(a3)),

    event(0x0524B25C, "HDASetTimer"),
    other("action:%llx timeout:%d.%03d.%03d.%03d replaced action:%llx", a2, nanos(a3), a4),

    event(0x0524B260, "HDAEnableDFET"),
    start("Start enable:%s type:%llx", boolean(a2), a3),
    end("End DFETControl:%llx enabled:%s result:0x%08x", a2, boolean(a3), lo(a4)),

    event(0x0524B264, "HDAGetUCDiagState"),
    start("Start nodeID:%lld coefIndex:%llx", a2, a3),
    end("End UCDiagState:%llx result:0x%08x", a2, lo(a3)),

    event(0x0524B268, "HDASetUCDiagState"),
    start("Start UCDiagState:%llx -> %llx", a2, named("new UCDiagState", a3)),
    end("End UCDiagState:%llx polls:%lld result:0x%08x", a2, a3, lo(a4)),

    event(0x0524B26C, "HDAConfigureHeadset"),
    start("Start type:%llx ID:%llx micConnected:%s", a2, a3, boolean(a4)),
    end("End type:%llx buttonsEnabled:%s result:0x%08x", a2, boolean(a3), lo(a4)),

    event(0x0524B270, "HDASetupJackDetection"),
    start("Start pin nodeID:%lld tag:%llx", a2, a3),
    end("End pinSense:%llx enabled:%s result:0x%08x", a2, boolean(a3), lo(a4)),
    sel(1, "CS8409"),  // the codec that needs the bridge's own set-up

    event(0x0524B274, "HDAHandleJackDetectUR"),
    start("Start response:%llx jackConnected:%s type:%llx", a2, boolean(a3), a4),
    end("End pending action:%llx result:0x%08x", a2, lo(a3)),
    sel(1, "plugged - timeout:%d.%03d.%03d.%03d", nanos(a2)),
    sel(2, "unplugged - type:%llx ID:%llx", a2, a3),
    sel(3, "no change - pinSense:%llx", a2),

    event(0x0524B278, "HDACompleteJackeDetectUR"),  // sic
    start("Start pinSense:%llx elapsed:%d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End jackConnected:%s type:%llx result:0x%08x", boolean(a2), a3, lo(a4)),
    sel(1, "jack bounced - response:%llx pinSense:%llx", a2, a3),

    event(0x0524B27C, "HDAEnableHSDetection"),
    start("Start enable:%s retry:%llx powerState:%lld", boolean(a2), a3, a4),
    end("End detecting:%s timeout:%d.%03d.%03d.%03d result:0x%08x", boolean(a2), nanos(a3), lo(a4)),

    event(0x0524B280, "HDAHandleTypeDetectUR"),
    start("Start verb_response:%llx", a2),
    end("End type:%llx retry:%llx result:0x%08x", a2, a3, lo(a4)),
    sel(1, "HeadsetType:%llx", a2),
    sel(2, "Headset unknown retry:%llx", named("retry", a2)),
    sel(3, "Headset unknown giving up"),
    sel(4, "Headset unknown disconnect"),
    sel(5, "detection complete type:%llx", named("type", a2)),
    sel(6, "Success"),

    event(0x0524B284, "HDAPowerHSBias"),
    start("Start vRefPercentOfVdd:%llx", a2),
    end("End pinControl:%llx timeout:%d.%03d.%03d.%03d result:0x%08x", a2, nanos(a3), lo(a4)),

    event(0x0524B288, "HDASetupButtonDetection"),
    start("Start type:%llx ID:%llx tag:%llx", a2, a3, a4),
    end("End buttonMask:%llx ackPending:%s result:0x%08x", a2, boolean(a3), lo(a4)),

    event(0x0524B28C, "HDADisableButtonDetection"),
    start("Start buttonMask:%llx buttonsHeld:%llx", a2, a3),
    end("End releasedButtons:%llx result:0x%08x", a2, lo(a3)),

    event(0x0524B290, "HDAHandleJackDisconnectUR"),
    start("Start response:%llx type:%llx pending action:%llx", a2, a3, a4),
    end("End biasOff:%s enabled:%s result:0x%08x", boolean(a2), boolean(a3), lo(a4)),

    event(0x0524B294, "HDAHandleButtonDetectUR"),
    start("Start response:%llx ID:%llx type:%llx", a2, a3, a4),
    end("End buttonsHeld:%llx result:0x%08x", a2, lo(a3)),
    sel(1, "Mic Short:%llx", a2),
    failure(sel(2, "TX ACK TIMEOUT")),
    sel(3, "TX ACK Received"),
    sel(4, "S0 Button Press"),  // S0 whole, then the presses of S1 to S4, then their releases
    sel(5, "S0 Button Release"),
    sel(6, "S1 Button Press"),
    sel(7, "S2 Button Press"),
    sel(8, "S3 Button Press"),
    sel(9, "S4 Button Press"),
    sel(10, "S1 Button Release"),
    sel(11, "S2 Button Release"),
    sel(12, "S3 Button Release"),
    sel(13, "S4 Button Release"),
    sel(14, "Button Press NONE"),

    event(0x0524B298, "HDAEnableHPClamps"),
    start("Start enable:%s jackConnected:%s outputRunning:%s", boolean(a2), boolean(a3), boolean(a4)),
    end("End clampControl:%llx result:0x%08x", a2, lo(a3)),

    event(0x0524B29C, "HDAEnableHSBiasAutoClamp"),
    start("Start enable:%s currentSenseTrip:%llx vRefPercentOfVdd:%llx", boolean(a2), a3, a4),
    end("End clamped:%s result:0x%08x", boolean(a2), lo(a3)),

    event(0x0524B2A0, "HDAMicrophoneConnected"),
    other("micConnected:%s type:%llx pinSense:%llx", boolean(a2), a3, a4),

    event(0x0524B2A4, "HDAConfigureForUSHeadset"),
    start("Start switchControl:%llx reverseWiring:%s type:%llx", a2, boolean(a3), a4),
    end("End switchControl:%llx micOnSleeve:%s result:0x%08x", a2, boolean(a3), lo(a4)),

    event(0x0524B2A8, "HDAGeneralTimerCallback"),
    other("action:%llx timeout:%d.%03d.%03d.%03d elapsed:%d.%03d.%03d.%03d", a2, nanos(a3), nanos(a4)),

    event(0x0524B2AC, "HDASetPowerState"),
    start("Start powerState:%lld fPowerState:%lld type:%llx", a2, a3, a4),
    end("End fPowerState:%lld jackConnected:%s result:0x%08x", a2, boolean(a3), lo(a4)),
    sel(1, "RegistersAndEvents"),    // wake: both are set up anew,
    sel(2, "triggerJackDetection"),  // then the jack is looked at as if just plugged
};

}  // namespace

constexpr Decoder kPimlet = decoder<kPimletRows, "OrvelPimlet">(audioClass(44), 72);

}  // namespace sonaprobe::decoders
