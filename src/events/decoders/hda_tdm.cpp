// High-definition audio over time-division buses: the bus manager of the codec, and the codecs and
// amplifiers on the buses behind it (class 32).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// Where an event names two groups, its start and end are the common class's, what happens between
// them is the chip's. Wherever an end text has a result, it is in arg4.
constexpr Entry kTdmRows[] = {
    event(0x05248000, "CreateFromDictionary"),
    start("Start - dictionary: %p bus: %lld", a2, a3),
    end("End - config: %p fSlotCount: %d fBitsPerSlot: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "channel: %lld has bitOffset: %lld", a2, a3),
    sel(1, "dictionary: %p is incomplete, keys found: 0x%llx", a2, a3),

    event(0x05248004, "getChannelOffsetForChannel"),
    start("Start - channel: %lld fChannelCount: %lld", a2, a3),
    end("End - channel: %lld bitOffset: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x05248008, "TDMConfig::free"),
    any("releasing fChannelOffsets: %p fChannelCount: %lld", a2, a3),

    ofGroup("OrvelHDATDMBusManagerCS4208", event(0x0524800C, "init")),
    start("Start - fCodec: %p fVendorID: 0x%08x fRevisionID: 0x%08x", a2, hi(a3), lo(a3)),
    end("End - fBusCount: %lld fDeviceCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bus: %lld has output nodeID: %d input nodeID: %d", a2, hi(a3), lo(a3)),
    sel(1, "no TDM support in fRevisionID: 0x%llx, working without buses", a2),

    ofGroup("OrvelHDATDMBusManager", event(0x05248010, "free")),
    start("Start - fCodec: %p fBusCount: %lld fEnabledBuses: 0x%llx", a2, a3, a4),
    end("End - devices released: %lld", a2),
    sel(0, "bus: %lld is still enabled for widgets: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMBusManager", event(0x05248014, "setupTDMPath")),
    start("Start - nodeID: %d bus: %d sampleRate: %d bitsPerSample: %d channelCount: %d context: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3), hi(a4), lo(a4)),
    end("End - nodeID: %lld bus: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(1, "bus: %d slotCount: %d bitsPerSlot: %d controlRegister: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(2, "nodeID: %lld channel: %d goes to bitOffset: %d", a2, hi(a3), lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(3, "bus: %lld runs already, joining widgets: 0x%llx", a2, a3)),

    ofGroup("OrvelHDATDMBusManager", event(0x05248018, "disableTDMPath")),
    start("Start - nodeID: %lld bus: %lld enabledWidgets: 0x%llx", a2, a3, a4),
    end("End - nodeID: %lld enabledWidgets: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(1, "taking nodeID: %lld off its slots, controlRegister: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(2, "no widget left, stopping clocks of bus: %lld controlRegister: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(3, "clocks of bus: %lld keep running for widgets: 0x%llx", a2, a3)),

    ofGroup("OrvelHDATDMBusManager", event(0x0524801C, "widgetsEnabledOnBus")),
    start("Start - bus: %lld excluding nodeID: %lld", a2, a3),
    end("End - bus: %lld enabledWidgets: 0x%llx count: %lld", a2, a3, a4),

    ofGroup("OrvelHDATDMBusManager", event(0x05248020, "widgetActive")),
    start("Start - nodeID: %lld", a2),
    end("End - nodeID: %lld bus: %lld active: %s", a2, a3, boolean(a4)),
    sel(0, "nodeID: %lld is routed to bus: %lld but has no stream", a2, a3),

    ofGroup("OrvelHDATDMBusManager", event(0x05248024, "setSampleRate")),
    start("Start - bus: %lld sampleRate: %d fSampleRate: %d enabledWidgets: 0x%llx", a2, hi(a3), lo(a3), a4),
    end("End - bus: %lld fSampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(0, "bus: %lld dividing MCLK of %d Hz by %d", a2, hi(a3), lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(1, "sampleRate: %lld cannot be made from MCLK of %lld Hz", a2, a3)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(2, "other widgets hold bus: %lld at sampleRate: %lld", a2, a3)),

    ofGroup("OrvelHDATDMBusManager", event(0x05248028, "GetControlRegisterFromWidgetID")),
    start("Start - widgetID: %lld fBusCount: %lld", a2, a3),
    end("End - widgetID: %lld controlRegister: 0x%llx result: 0x%08x", a2, a3, lo(a4)),

    ofGroup("OrvelHDATDMBusManager", event(0x0524802C, "enableMCLK")),
    start("Start - enable: %s mclkSource: %lld fMCLKEnableCount: %lld", boolean(a2), a3, a4),
    end("End - mclkSource: %lld fMCLKEnableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "first user, starting MCLK at %lld Hz from mclkSource: %lld", a2, a3),
    sel(1, "last user is gone, stopping MCLK from mclkSource: %lld", a2),

    ofGroup("OrvelHDATDMBusManager", event(0x05248030, "tdmInUse")),
    start("Start - fEnabledBuses: 0x%llx fMCLKEnableCount: %lld", a2, a3),
    end("End - inUse: %s", boolean(a2)),
    sel(0, "in use through bus: %lld enabledWidgets: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMBusManager", event(0x05248034, "configureTDMUR")),
    start("Start - enable: %s nodeID: %lld tag: 0x%llx", boolean(a2), a3, a4),
    end("End - nodeID: %lld unsolicited responses enabled: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "interrupt line: %lld of device: %p raises the response", a2, a3),

    ofGroup("OrvelHDATDMFactory", event(0x05248038, "createOrvelHDATDMDevice")),
    start("Start - busManager: %p dictionary: %p deviceType: %c%c%c%c", a2, a3, fourCC(lo(a4))),
    end("End - device: %p bus: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "creating amplifier, address: 0x%llx config: %p", a2, a3),
    sel(1, "creating codec, address: 0x%llx config: %p", a2, a3),
    sel(2, "no driver for deviceType: %c%c%c%c at address: 0x%llx", fourCC(lo(a2)), a3),

    ofGroup("OrvelHDATDMDevice", event(0x0524803C, "init")),
    start("Start - dictionary: %p fAddress: 0x%llx fConfigCount: %lld", a2, a3, a4),
    end("End - fAddress: 0x%llx fMCLKSource: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "config: %p is for bus: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248040, "free")),
    any("releasing fConfigArray: %p fBusController: %p fEnableCount: %lld", a2, a3, a4),

    ofGroup("OrvelHDATDMDevice", event(0x05248044, "setBusController")),
    start("Start - busController: %p fBusController: %p", a2, a3),
    end("End - fBusController: %p result: 0x%08x", a2, lo(a4)),

    ofGroup("OrvelHDATDMDevice", event(0x05248048, "getBusController")),
    any("fBusController: %p fAddress: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x0524804C, "isCodecDevice")),
    any("deviceType: %c%c%c%c isCodec: %s", fourCC(lo(a2)), boolean(a3)),

    ofGroup("OrvelHDATDMDevice", event(0x05248050, "getMCLKSource")),
    any("fMCLKSource: %lld frequency: %lld Hz shared with other devices: %s", a2, a3, boolean(a4)),

    ofGroup("OrvelHDATDMDevice", event(0x05248054, "enable")),
    start("Start - enable: %s bus: %lld fEnableCount: %lld", boolean(a2), a3, a4),
    end("End - bus: %lld fEnableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bus: %lld is not one of this device, fBusMask: 0x%llx", a2, a3),
    sel(1, "fBusController: %p has no clock on bus: %lld yet", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248058, "deviceChannelsEnabledOnBus")),  // asks the device
    start("Start - bus: %lld fEnabledChannels: 0x%llx", a2, a3),
    end("End - bus: %lld channels enabled: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x0524805C, "deviceChannelsEnabledOnBus")),  // tells the device
    start("Start - bus: %lld channels: 0x%llx enable: %s", a2, a3, boolean(a4)),
    end("End - bus: %lld fEnabledChannels: 0x%llx result: 0x%08x", a2, a3, lo(a4)),

    ofGroup("OrvelHDATDMDevice", event(0x05248060, "writeReg")),
    start("Start - register: 0x%llx value: 0x%llx", a2, a3),
    end("End - register: 0x%llx result: 0x%08x", a2, lo(a4)),
    sel(0, "register: 0x%llx not acknowledged, writing again, attempt: %lld", a2, a3),
    sel(1, "register: 0x%llx is on another page, writing page: 0x%llx first", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248064, "readReg")),  // one register
    start("Start - register: 0x%llx", a2),
    end("End - register: 0x%llx value: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "register: 0x%llx not acknowledged, reading again, attempt: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248068, "readReg")),  // a run of registers
    start("Start - startRegister: 0x%llx count: %lld buffer: %p", a2, a3, a4),
    end("End - startRegister: 0x%llx registers read: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "stopped at register: 0x%llx, registers still to read: %lld", a2, a3),

    ofGroup("OrvelHDATDMCodec", event(0x0524806C, "init")),
    start("Start - dictionary: %p fAddress: 0x%llx fTDMBusCount: %lld", a2, a3, a4),
    end("End - fDeviceID: 0x%llx fCodecState: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "found deviceID: 0x%llx revision: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "deviceID: 0x%llx is not the expected 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(2, "no answer at fAddress: 0x%llx, attempt: %lld", a2, a3)),

    ofGroup("OrvelHDATDMCodec", event(0x05248070, "getTDMBusCount")),
    any("fTDMBusCount: %lld fBusMask: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMCodec", event(0x05248074, "getID")),
    any("fDeviceID: 0x%llx fRevisionID: 0x%llx fAddress: 0x%llx", a2, a3, a4),

    ofGroup("OrvelHDATDMCodec", event(0x05248078, "isCodecDevice")),
    any("fDeviceID: 0x%llx isCodec: %s", a2, boolean(a3)),

    ofGroup("OrvelHDATDMCodec", event(0x0524807C, "enable")),
    start("Start - enable: %s bus: %lld fCodecState: %lld", boolean(a2), a3, a4),
    end("End - bus: %lld fCodecState: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "bus: %lld starts playback, fEnabledChannels: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "bus: %lld starts recording, fEnabledChannels: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(2, "nothing enabled any more, going to standby in %d.%03d.%03d.%03d", nanos(a2))),

    ofGroup("OrvelHDATDMCodec", event(0x05248080, "resetDevice")),
    start("Start - fCodecState: %lld fResetLine: %lld", a2, a3),
    end("End - fCodecState: %lld time to answer: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "fResetLine: %lld held for %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "no answer after reset, attempt: %lld", a2),

    ofGroup("OrvelHDATDMCodec", event(0x05248084, "disambiguateURfromINT")),
    start("Start - response: 0x%llx tag: 0x%llx", a2, a3),
    end("End - response: 0x%llx turned into tags: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "no interrupt pending, response: 0x%llx is the TDM port's own", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "headphone jack, plugStatus: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(2, "headset detection done, detectStatus: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(3, "headset remote, pimletStatus: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x05248088, "readStatusAndClearInterrupt")),
    start("Start - fInterruptMask: 0x%llx", a2),
    end("End - interruptStatus: 0x%llx pending: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "plugStatus: 0x%08x detectStatus: 0x%08x pimletStatus: 0x%08x", hi(a2), lo(a2), lo(a3))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "interrupt came again while clearing, interruptStatus: 0x%llx pass: %lld", a2, a3)),

    ofGroup("OrvelHDATDMCodec", event(0x0524808C, "getHeadphonePinSense")),
    start("Start - fPlugStatus: 0x%llx fCodecState: %lld", a2, a3),
    end("End - headphones plugged: %s pinSense: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "plug is bouncing, fPlugStatus: 0x%llx settle time: %d.%03d.%03d.%03d", a2, nanos(a3)),

    ofGroup("OrvelHDATDMCodec", event(0x05248090, "getExtMicPinSense")),
    start("Start - fHeadsetType: %lld fHSDetDone: %s", a2, boolean(a3)),
    end("End - external microphone present: %s pinSense: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "headset detection not done, no microphone yet, detectStatus: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "microphone level: 0x%llx threshold: 0x%llx", a2, a3)),

    ofGroup("OrvelHDATDMCodec", event(0x05248094, "enableHeadphones")),
    start("Start - enable: %s fHeadphonesEnabled: %s fHeadsetType: %lld", boolean(a2), boolean(a3), a4),
    end("End - fHeadphonesEnabled: %s result: 0x%08x", boolean(a2), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "unclamping output, then powering amplifier, powerControl: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "powering amplifier down, then clamping output, powerControl: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x05248098, "enableExtMicrophone")),
    start("Start - enable: %s fExtMicEnabled: %s fHeadsetType: %lld", boolean(a2), boolean(a3), a4),
    end("End - fExtMicEnabled: %s result: 0x%08x", boolean(a2), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "microphone bias on, waiting %d.%03d.%03d.%03d for it to rise, biasControl: 0x%llx", nanos(a2), a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "microphone bias stays on for the headset remote, biasControl: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x0524809C, "enterStandby")),
    start("Start - fCodecState: %lld fHeadsetType: %lld fEnabledChannels: 0x%llx", a2, a3, a4),
    end("End - fCodecState: %lld result: 0x%08x", a2, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "plug detection keeps running in standby, wakeMask: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "no standby while channels are enabled: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x052480A0, "powerOn")),
    start("Start - fCodecState: %lld fMCLKSource: %lld", a2, a3),
    end("End - fCodecState: %lld power-on time: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "registers restored: %lld skipped: %lld", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "supply is not stable, powerStatus: 0x%llx waited: %d.%03d.%03d.%03d", a2, nanos(a3))),

    ofGroup("OrvelHDATDMCodec", event(0x052480A4, "readPimlet")),
    start("Start - pimletRegister: 0x%llx length: %lld", a2, a3),
    end("End - pimletRegister: 0x%llx value: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "waiting for the remote's answer, pimletStatus: 0x%llx poll: %lld", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "remote did not answer a read of pimletRegister: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x052480A8, "writePimlet")),
    start("Start - pimletRegister: 0x%llx value: 0x%llx", a2, a3),
    end("End - pimletRegister: 0x%llx bytes sent: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "transmit buffer is full, pimletStatus: 0x%llx bytes waiting: %lld", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "remote did not acknowledge a write of pimletRegister: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x052480AC, "setHPOutClamp")),
    start("Start - clamp: %s fHPOutClamped: %s", boolean(a2), boolean(a3)),
    end("End - fHPOutClamped: %s clampControl: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4)),

    ofGroup("OrvelHDATDMCodec", event(0x052480B0, "getHSDetAutoDone")),
    start("Start - fHeadsetType: %lld fHSDetTries: %lld", a2, a3),
    end("End - autoDone: %s fHeadsetType: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "still detecting, detectStatus: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "done, detectStatus: 0x%llx headsetType: %lld", a2, a3)),

    ofGroup("OrvelHDATDMCodec", event(0x052480B4, "enableHSDetAutoInt")),
    start("Start - enable: %s fInterruptMask: 0x%llx", boolean(a2), a3),
    end("End - fInterruptMask: 0x%llx result: 0x%08x", a2, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "starting automatic detection, detectControl: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "dropping an old result before enabling, detectStatus: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480B8, "configureIntMClk")),
    start("Start - bitClock: %lld Hz fIntMClk: %lld Hz usePLL: %s", a2, a3, boolean(a4)),
    end("End - fIntMClk: %lld Hz result: 0x%08x", a2, lo(a4)),
    sel(0, "PLL locked after %d.%03d.%03d.%03d, pllStatus: 0x%llx", nanos(a2), a3),
    sel(1, "PLL did not lock, staying on the internal oscillator, pllStatus: 0x%llx", a2),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480BC, "configureSerialPort")),
    start("Start - bus: %lld slotCount: %d bitsPerSlot: %d sampleRate: %lld", a2, hi(a3), lo(a3), a4),
    end("End - bus: %lld portControl: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "channel: %lld listens at bitOffset: %lld", a2, a3),
    sel(1, "channel: %lld talks at bitOffset: %lld", a2, a3),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480C0, "setSampleRate")),
    start("Start - sampleRate: %lld fSampleRate: %lld fCodecState: %lld", a2, a3, a4),
    end("End - fSampleRate: %lld result: 0x%08x", a2, lo(a4)),
    sel(0, "converters muted for the change, rateControl: 0x%llx", a2),
    sel(1, "sampleRate: %lld is not possible with fIntMClk: %lld Hz", a2, a3),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480C4, "setupAudioInput")),
    start("Start - bus: %lld channelCount: %lld fExtMicEnabled: %s", a2, a3, boolean(a4)),
    end("End - bus: %lld inputControl: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ADC powered, waiting %d.%03d.%03d.%03d for its filter to settle, bus: %lld", nanos(a2), a3),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480C8, "setupAudioOutput")),
    start("Start - bus: %lld channelCount: %lld fHeadphonesEnabled: %s", a2, a3, boolean(a4)),
    end("End - bus: %lld outputControl: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "DAC powered, output load is %lld ohm, outputControl: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMAmp", event(0x052480CC, "init")),
    start("Start - dictionary: %p fAddress: 0x%llx", a2, a3),
    end("End - fAmpChannel: %lld fEnableLine: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no enable line in dictionary: %p, amplifier follows its clock", a2),

    ofGroup("OrvelHDATDMAmp", event(0x052480D0, "enable")),
    start("Start - enable: %s fAmpEnabled: %s fAmpChannel: %lld", boolean(a2), boolean(a3), a4),
    end("End - fAmpEnabled: %s fFaultCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "waiting %d.%03d.%03d.%03d for the supply before unmuting, fAmpChannel: %lld", nanos(a2), a3),
    sel(1, "held off by a fault, faultStatus: 0x%llx fFaultCount: %lld", a2, a3),

    ofGroup("OrvelHDATDMAmp", event(0x052480D4, "faultHandler")),
    start("Start - faultStatus: 0x%llx fFaultCount: %lld fAmpEnabled: %s", a2, a3, boolean(a4)),
    end("End - fault gone: %s fFaultCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "too hot, muting fAmpChannel: %lld temperature: %lld", a2, a3),
    sel(1, "too much current on fAmpChannel: %lld, peak: %lld mA", a2, a3),
    sel(2, "bit clock lost, lastBitClock: %lld Hz", a2),
    sel(3, "enabling amplifier again, fFaultCount: %lld", a2),
    sel(4, "giving up, amplifier stays off, fFaultCount: %lld", a2),
};

}  // namespace

constexpr Decoder kHdaTdm = decoder<kTdmRows, "OrvelHDATDM">(audioClass(32), 54);

}  // namespace sonaprobe::decoders
