// High-definition audio over time-division buses: the bus manager of the codec, and the codecs and
// amplifiers on the buses behind it (class 32).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// Where an event names two groups, its start and end are the common class's, what happens between
// them is the chip's.
constexpr Entry kTdmRows[] = {
    event(0x05248000, "CreateFromDictionary"),
    start("Start - dictionary: %p bus: %lld", a2, a3),
    end("End - config: %p fSlotCount: %d fBitsPerSlot: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "channel: %lld bitOffset: %lld", a2, a3),
    sel(1, "ERROR: incomplete dictionary - dictionary: %p keyMask: 0x%llx", a2, a3),

    event(0x05248004, "getChannelOffsetForChannel"),
    start("Start - channel: %lld fChannelCount: %lld", a2, a3),
    end("End - channel: %lld bitOffset: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x05248008, "TDMConfig::free"),
    start("Start - fChannelOffsets: %p fChannelCount: %lld", a2, a3),
    end("End"),

    ofGroup("OrvelHDATDMBusManagerCS4208", event(0x0524800C, "init")),
    start("Start - fCodec: %p fVendorID: 0x%08x fRevisionID: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - fBusCount: %lld fDeviceCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bus: %lld output nodeID: %d input nodeID: %d", a2, hi(a3), lo(a3)),
    sel(1, "revision without TDM - fRevisionID: 0x%08x", lo(a2)),

    ofGroup("OrvelHDATDMBusManager", event(0x05248010, "free")),
    start("Start - fCodec: %p fBusCount: %lld fEnabledBuses: 0x%llx", a2, a3, a4),
    end("End - released: %lld", a2),
    sel(0, "bus still enabled - bus: %lld enabledWidgets: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMBusManager", event(0x05248014, "setupTDMPath")),
    start("Start - nodeID: %d bus: %d sampleRate: %d bitsPerSample: %d channelCount: %d context: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3), hi(a4), lo(a4)),
    end("End - nodeID: %lld bus: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(1, "bus: %d slotCount: %d bitsPerSlot: %d controlRegister: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(2, "nodeID: %lld channel: %d bitOffset: %d", a2, hi(a3), lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(3, "joining running bus - bus: %lld enabledWidgets: 0x%llx", a2, a3)),

    ofGroup("OrvelHDATDMBusManager", event(0x05248018, "disableTDMPath")),
    start("Start - nodeID: %lld bus: %lld enabledWidgets: 0x%llx", a2, a3, a4),
    end("End - nodeID: %lld enabledWidgets: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(1, "freeing slots - nodeID: %lld controlRegister: 0x%08x", a2, lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(2, "stopping clocks - bus: %lld controlRegister: 0x%08x", a2, lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(3, "keeping clocks - bus: %lld enabledWidgets: 0x%llx", a2, a3)),

    ofGroup("OrvelHDATDMBusManager", event(0x0524801C, "widgetsEnabledOnBus")),
    start("Start - bus: %lld excludedNodeID: %lld", a2, a3),
    end("End - bus: %lld enabledWidgets: 0x%llx count: %lld", a2, a3, a4),

    ofGroup("OrvelHDATDMBusManager", event(0x05248020, "widgetActive")),
    start("Start - nodeID: %lld", a2),
    end("End - nodeID: %lld bus: %lld active: %s", a2, a3, boolean(a4)),
    sel(0, "routed without stream - nodeID: %lld bus: %lld", a2, a3),

    ofGroup("OrvelHDATDMBusManager", event(0x05248024, "setSampleRate")),
    start("Start - bus: %lld sampleRate: %d fSampleRate: %d enabledWidgets: 0x%llx", a2, hi(a3), lo(a3), a4),
    end("End - bus: %lld fSampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(0, "bus: %lld mclkRate(Hz): %d mclkDivider: %d", a2, hi(a3), lo(a3))),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(1, "ERROR: no divider - sampleRate: %lld mclkRate(Hz): %lld", a2, a3)),
    ofGroup("OrvelHDATDMBusManagerCS4208", sel(2, "ERROR: bus used by other widgets - bus: %lld sampleRate: %lld", a2, a3)),

    ofGroup("OrvelHDATDMBusManager", event(0x05248028, "GetControlRegisterFromWidgetID")),
    start("Start - widgetID: %lld fBusCount: %lld", a2, a3),
    end("End - widgetID: %lld controlRegister: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),

    ofGroup("OrvelHDATDMBusManager", event(0x0524802C, "enableMCLK")),
    start("Start - enable: %s mclkSource: %lld fMCLKEnableCount: %lld", boolean(a2), a3, a4),
    end("End - mclkSource: %lld fMCLKEnableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "first user - mclkRate(Hz): %lld mclkSource: %lld", a2, a3),
    sel(1, "last user - mclkSource: %lld", a2),

    ofGroup("OrvelHDATDMBusManager", event(0x05248030, "tdmInUse")),
    start("Start - fEnabledBuses: 0x%llx fMCLKEnableCount: %lld", a2, a3),
    end("End - inUse: %s", boolean(a2)),
    sel(0, "bus: %lld enabledWidgets: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMBusManager", event(0x05248034, "configureTDMUR")),
    start("Start - enable: %s nodeID: %lld tag: 0x%llx", boolean(a2), a3, a4),
    end("End - nodeID: %lld enabled: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "interrupt line: %lld device: %p", a2, a3),

    ofGroup("OrvelHDATDMFactory", event(0x05248038, "createOrvelHDATDMDevice")),
    start("Start - busManager: %p dictionary: %p deviceType: %c%c%c%c", a2, a3, fourCC(a4)),
    end("End - device: %p bus: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "creating amplifier - address: 0x%llx config: %p", a2, a3),
    sel(1, "creating codec - address: 0x%llx config: %p", a2, a3),
    sel(2, "ERROR: no driver - deviceType: %c%c%c%c address: 0x%llx", fourCC(a2), a3),

    ofGroup("OrvelHDATDMDevice", event(0x0524803C, "init")),
    start("Start - dictionary: %p fAddress: 0x%llx fConfigCount: %lld", a2, a3, a4),
    end("End - fAddress: 0x%llx fMCLKSource: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "config: %p bus: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248040, "free")),
    start("Start - fConfigArray: %p fBusController: %p fEnableCount: %lld", a2, a3, a4),
    end("End"),

    ofGroup("OrvelHDATDMDevice", event(0x05248044, "setBusController")),
    start("Start - busController: %p fBusController: %p", a2, a3),
    end("End - fBusController: %p result: 0x%08x", a2, lo(a3)),

    ofGroup("OrvelHDATDMDevice", event(0x05248048, "getBusController")),
    start("Start"),
    end("End - fBusController: %p fAddress: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x0524804C, "isCodecDevice")),
    start("Start"),
    end("End - isCodec: %s", boolean(a2)),

    ofGroup("OrvelHDATDMDevice", event(0x05248050, "getMCLKSource")),
    start("Start"),
    end("End - fMCLKSource: %lld mclkRate(Hz): %lld shared: %s", a2, a3, boolean(a4)),

    ofGroup("OrvelHDATDMDevice", event(0x05248054, "enable")),
    start("Start - enable: %s bus: %lld fEnableCount: %lld", boolean(a2), a3, a4),
    end("End - bus: %lld fEnableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "not on this bus - bus: %lld fBusMask: 0x%llx", a2, a3),
    sel(1, "ERROR: no clock - fBusController: %p bus: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248058, "deviceChannelsEnabledOnBus")),  // asks the device
    start("Start - bus: %lld fEnabledChannels: 0x%llx", a2, a3),
    end("End - bus: %lld channelCount: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x0524805C, "deviceChannelsEnabledOnBus")),  // tells the device
    start("Start - bus: %lld channels: 0x%llx enable: %s", a2, a3, boolean(a4)),
    end("End - bus: %lld fEnabledChannels: 0x%llx result: 0x%08x", a2, a3, lo(a4)),

    ofGroup("OrvelHDATDMDevice", event(0x05248060, "writeReg")),
    start("Start - register: 0x%llx value: 0x%08x", a2, lo(a3)),
    end("End - register: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "ERROR: no acknowledge - register: 0x%llx attempt: %lld", a2, a3),
    sel(1, "changing page - register: 0x%llx page: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248064, "readReg")),  // one register
    start("Start - register: 0x%llx", a2),
    end("End - register: 0x%llx value: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "ERROR: no acknowledge - register: 0x%llx attempt: %lld", a2, a3),

    ofGroup("OrvelHDATDMDevice", event(0x05248068, "readReg")),  // a run of registers
    start("Start - startRegister: 0x%llx count: %lld buffer: %p", a2, a3, a4),
    end("End - startRegister: 0x%llx count: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: read incomplete - register: 0x%llx registers left: %lld", a2, a3),

    ofGroup("OrvelHDATDMCodec", event(0x0524806C, "init")),
    start("Start - dictionary: %p fAddress: 0x%llx fTDMBusCount: %lld", a2, a3, a4),
    end("End - fDeviceID: 0x%llx fCodecState: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "deviceID: 0x%llx revisionID: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "ERROR: unexpected device - deviceID: 0x%llx expectedDeviceID: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(2, "ERROR: no answer - fAddress: 0x%llx attempt: %lld", a2, a3)),

    ofGroup("OrvelHDATDMCodec", event(0x05248070, "getTDMBusCount")),
    start("Start"),
    end("End - fTDMBusCount: %lld fBusMask: 0x%llx", a2, a3),

    ofGroup("OrvelHDATDMCodec", event(0x05248074, "getID")),
    start("Start"),
    end("End - fDeviceID: 0x%llx fRevisionID: 0x%08x fAddress: 0x%llx", a2, lo(a3), a4),

    ofGroup("OrvelHDATDMCodec", event(0x05248078, "isCodecDevice")),
    start("Start"),
    end("End - isCodec: %s", boolean(a2)),

    ofGroup("OrvelHDATDMCodec", event(0x0524807C, "enable")),
    start("Start - enable: %s bus: %lld fCodecState: %lld", boolean(a2), a3, a4),
    end("End - bus: %lld fCodecState: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "starting playback - bus: %lld fEnabledChannels: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "starting recording - bus: %lld fEnabledChannels: 0x%llx", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(2, "last channel disabled - timeout: %d.%03d.%03d.%03d", nanos(a2))),

    ofGroup("OrvelHDATDMCodec", event(0x05248080, "resetDevice")),
    start("Start - fCodecState: %lld fResetLine: %lld", a2, a3),
    end("End - fCodecState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "reset line released - fResetLine: %lld elapsed: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: no answer after reset - attempt: %lld", a2),

    ofGroup("OrvelHDATDMCodec", event(0x05248084, "disambiguateURfromINT")),
    start("Start - response: 0x%08x tag: 0x%llx", lo(a2), a3),
    end("End - response: 0x%08x tags: 0x%llx result: 0x%08x", lo(a2), a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "no interrupt pending - response: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "headphone jack - plugStatus: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(2, "headset detection done - detectStatus: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(3, "headset remote - pimletStatus: 0x%08x", lo(a2))),

    ofGroup("OrvelHDATDMCodec", event(0x05248088, "readStatusAndClearInterrupt")),
    start("Start - fInterruptMask: 0x%llx", a2),
    end("End - interruptStatus: 0x%08x pendingStatus: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "plugStatus: 0x%08x detectStatus: 0x%08x pimletStatus: 0x%08x", hi(a2), lo(a2), lo(a3))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "interrupt pending again - interruptStatus: 0x%08x pass: %lld", lo(a2), a3)),

    ofGroup("OrvelHDATDMCodec", event(0x0524808C, "getHeadphonePinSense")),
    start("Start - fPlugStatus: 0x%08x fCodecState: %lld", lo(a2), a3),
    end("End - plugged: %s pinSense: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "debouncing - fPlugStatus: 0x%08x timeout: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    ofGroup("OrvelHDATDMCodec", event(0x05248090, "getExtMicPinSense")),
    start("Start - fHeadsetType: %lld fHSDetDone: %s", a2, boolean(a3)),
    end("End - plugged: %s pinSense: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "headset detection not done - detectStatus: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "micLevel: 0x%llx micThreshold: 0x%llx", a2, a3)),

    ofGroup("OrvelHDATDMCodec", event(0x05248094, "enableHeadphones")),
    start("Start - enable: %s fHeadphonesEnabled: %s fHeadsetType: %lld", boolean(a2), boolean(a3), a4),
    end("End - fHeadphonesEnabled: %s result: 0x%08x", boolean(a2), lo(a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "unclamping then powering amplifier - powerControl: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "powering down amplifier then clamping - powerControl: 0x%08x", lo(a2))),

    ofGroup("OrvelHDATDMCodec", event(0x05248098, "enableExtMicrophone")),
    start("Start - enable: %s fExtMicEnabled: %s fHeadsetType: %lld", boolean(a2), boolean(a3), a4),
    end("End - fExtMicEnabled: %s result: 0x%08x", boolean(a2), lo(a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "mic bias on - biasControl: 0x%08x timeout: %d.%03d.%03d.%03d", lo(a2), nanos(a3))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "mic bias kept for remote - biasControl: 0x%08x", lo(a2))),

    ofGroup("OrvelHDATDMCodec", event(0x0524809C, "enterStandby")),
    start("Start - fCodecState: %lld fHeadsetType: %lld fEnabledChannels: 0x%llx", a2, a3, a4),
    end("End - fCodecState: %lld result: 0x%08x", a2, lo(a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "keeping plug detection - wakeMask: 0x%llx", a2)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "channels still enabled - fEnabledChannels: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x052480A0, "powerOn")),
    start("Start - fCodecState: %lld fMCLKSource: %lld", a2, a3),
    end("End - fCodecState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "registers restored: %lld skipped: %lld", a2, a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "ERROR: supply not stable - powerStatus: 0x%08x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3))),

    ofGroup("OrvelHDATDMCodec", event(0x052480A4, "readPimlet")),
    start("Start - pimletRegister: 0x%llx length: %lld", a2, a3),
    end("End - pimletRegister: 0x%llx bytes read: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "waiting for remote - pimletStatus: 0x%08x poll: %lld", lo(a2), a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "ERROR: no answer to read - pimletRegister: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x052480A8, "writePimlet")),
    start("Start - pimletRegister: 0x%llx value: 0x%08x", a2, lo(a3)),
    end("End - pimletRegister: 0x%llx bytes sent: %lld result: 0x%08x", a2, a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "transmit buffer full - pimletStatus: 0x%08x bytes left: %lld", lo(a2), a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "ERROR: no acknowledge of write - pimletRegister: 0x%llx", a2)),

    ofGroup("OrvelHDATDMCodec", event(0x052480AC, "setHPOutClamp")),
    start("Start - clamp: %s fHPOutClamped: %s", boolean(a2), boolean(a3)),
    end("End - fHPOutClamped: %s clampControl: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),

    ofGroup("OrvelHDATDMCodec", event(0x052480B0, "getHSDetAutoDone")),
    start("Start - fHeadsetType: %lld fHSDetTries: %lld", a2, a3),
    end("End - autoDone: %s fHeadsetType: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "still detecting - detectStatus: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "done - detectStatus: 0x%08x headsetType: %lld", lo(a2), a3)),

    ofGroup("OrvelHDATDMCodec", event(0x052480B4, "enableHSDetAutoInt")),
    start("Start - enable: %s fInterruptMask: 0x%llx", boolean(a2), a3),
    end("End - fInterruptMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    ofGroup("OrvelHDATDMCodecZ58", sel(0, "starting automatic detection - detectControl: 0x%08x", lo(a2))),
    ofGroup("OrvelHDATDMCodecZ58", sel(1, "clearing old detection - detectStatus: 0x%08x", lo(a2))),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480B8, "configureIntMClk")),
    start("Start - bitClock(Hz): %lld fIntMClk(Hz): %lld usePLL: %s", a2, a3, boolean(a4)),
    end("End - fIntMClk(Hz): %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "PLL locked - pllStatus: 0x%08x elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "ERROR: PLL not locked - pllStatus: 0x%08x", lo(a2)),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480BC, "configureSerialPort")),
    start("Start - bus: %lld slotCount: %d bitsPerSlot: %d sampleRate: %lld", a2, hi(a3), lo(a3), a4),
    end("End - bus: %lld portControl: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "receiving - channel: %lld bitOffset: %lld", a2, a3),
    sel(1, "transmitting - channel: %lld bitOffset: %lld", a2, a3),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480C0, "setSampleRate")),
    start("Start - sampleRate: %lld fSampleRate: %lld fCodecState: %lld", a2, a3, a4),
    end("End - fSampleRate: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "converters muted - rateControl: 0x%08x", lo(a2)),
    sel(1, "ERROR: sampleRate not supported - sampleRate: %lld fIntMClk(Hz): %lld", a2, a3),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480C4, "setupAudioInput")),
    start("Start - bus: %lld channelCount: %lld fExtMicEnabled: %s", a2, a3, boolean(a4)),
    end("End - bus: %lld inputControl: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "ADC powered - bus: %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),

    ofGroup("OrvelHDATDMCodecZ58", event(0x052480C8, "setupAudioOutput")),
    start("Start - bus: %lld channelCount: %lld fHeadphonesEnabled: %s", a2, a3, boolean(a4)),
    end("End - bus: %lld outputControl: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "DAC powered - load(Ohm): %lld outputControl: 0x%08x", a2, lo(a3)),

    ofGroup("OrvelHDATDMAmp", event(0x052480CC, "init")),
    start("Start - dictionary: %p fAddress: 0x%llx", a2, a3),
    end("End - fAmpChannel: %lld fEnableLine: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no enable line - dictionary: %p", a2),

    ofGroup("OrvelHDATDMAmp", event(0x052480D0, "enable")),
    start("Start - enable: %s fAmpEnabled: %s fAmpChannel: %lld", boolean(a2), boolean(a3), a4),
    end("End - fAmpEnabled: %s fFaultCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "waiting for supply - fAmpChannel: %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: fault pending - faultStatus: 0x%08x fFaultCount: %lld", lo(a2), a3),

    ofGroup("OrvelHDATDMAmp", event(0x052480D4, "faultHandler")),
    start("Start - faultStatus: 0x%08x fFaultCount: %lld fAmpEnabled: %s", lo(a2), a3, boolean(a4)),
    end("End - cleared: %s fFaultCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "ERROR: over temperature - fAmpChannel: %lld temperature(C): %lld", a2, a3),
    sel(1, "ERROR: over current - fAmpChannel: %lld peakCurrent(mA): %lld", a2, a3),
    sel(2, "ERROR: bit clock lost - bitClock(Hz): %lld", a2),
    sel(3, "enabling amplifier again - fFaultCount: %lld", a2),
    sel(4, "ERROR: amplifier stays off - fFaultCount: %lld", a2),
};

}  // namespace

constexpr Decoder kHdaTdm = decoder<kTdmRows, "OrvelHDATDM">(audioClass(32), 54);

}  // namespace sonaprobe::decoders
