// USB audio, the engine (class 37): starting and stopping its streams, conversion of the samples
// that pass through it, format and clock changes.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kUsbEngineRows[] = {
    event(0x05249400, "free"),
    start("Start - mStreamArray: %p mPlugin: %p mClockSelectorArray: %p", a2, a3, a4),
    end("End"),

    event(0x05249410, "stop"),
    start("Start - provider: %p mPlugin: %p state: %lld", a2, a3, a4),
    end("End - mUSBAudioDevice: %p streams: %lld", a2, a3),
    other("terminating - stream: %p index: %lld", a2, a3),

    event(0x05249428, "clipOutputSamples"),
    verbose(start("Start - stream: %p firstSampleFrame: %lld numSampleFrames: %lld", a2, a3, a4)),
    verbose(end("End - stream: %p next firstSampleFrame: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(other("non-mixable stream first 16 bytes: 0x%16llx%16llx offset: %llu", named("first bytes", a2), named("next bytes", a3), a4)),  // sic: blanks fill both words

    event(0x0524942C, "controlledFormatChange"),
    start("Start - stream: %p sampleRate: %d ---> %d state: %lld", a2, hi(a3), named("new sampleRate", lo(a3)), a4),
    end("End - stream: %p sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "already set - sampleRate: %lld", a2),
    sel(1, "passing on - sampleRate: %lld mPlugin: %p", a2, a3),
    sel(2, "clockSourceID: %lld SET_CUR: %d GET_CUR: %d", a2, hi(a3), lo(a3)),
    sel(3, "ERROR: changing format - stream: %p returned: 0x%08x", a2, lo(a3)),

    event(0x05249430, "processInputStream"),
    verbose(start("Start - stream: %p destBuf: %p numSampleFrames: %lld", a2, a3, a4)),
    verbose(end("End - stream: %p numSampleFrames: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "calling convertFromOrvelUSBAudioInputStream_NoWrap - firstSampleFrame: %lld numSampleFrames: %lld", a2, a3)),
    verbose(sel(1, "calling memcpy of %lld bytes", named("bytes", a2))),

    event(0x05249434, "convertInputSamples"),
    verbose(start("Start - destBuf: %p firstSampleFrame: %lld numSampleFrames: %lld", a2, a3, a4)),
    verbose(end("End - mBytesCoalesced: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "reading - stream: %p mBufferOffset: %lld", a2, a3)),
    sel(1, "ERROR: samples not received - stream: %p firstSampleFrame: %lld", a2, a3),

    event(0x0524944C, "initHardware"),
    start("Start - provider: %p mUSBAudioDevice: %p streaming interfaces: %lld", a2, a3, a4),
    end("End - streams: %lld mPlugin: %p returning %s", a2, a3, named("returning", boolean(a4))),
    sel(0, "created - direction: %s stream: %p bInterfaceNumber: %d", either(a2, "output", "input"), a3, hi(a4)),
    sel(1, "sampleRate: %lld numSampleFramesPerBuffer: %lld", a2, a3),
    sel(2, "ERROR: no supported format - bInterfaceNumber: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x05249468, "pluginDeviceRequest"),
    start("Start - bmRequestType: 0x%02x bRequest: 0x%02x wValue: 0x%04x wIndex: 0x%04x wLength: %d", hi(a2), lo(a2), hi(a3), lo(a3), lo(a4)),
    end("End - wLenDone: %lld result: 0x%08x", a2, lo(a3)),

    event(0x05249474, "performAudioEngineStart"),
    start("Start - mStreamArray: %p sampleRate: %lld state: %lld", a2, a3, a4),
    end("End - running streams: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "starting - direction: %s stream: %p", either(a2, "output", "input"), a3),
    sel(1, "already running - stream: %p clients: %lld", a2, a3),
    sel(2, "ERROR: starting stream - stream: %p returned: 0x%08x", a2, lo(a3)),

    event(0x05249478, "performAudioEngineStop"),
    start("Start - running streams: %lld state: %lld isInactive: %s", a2, a3, boolean(a4)),
    end("End - closing streams: %lld result: 0x%08x", a2, lo(a3)),
    other("stopping - stream: %p loopCount: %lld", a2, a3),

    event(0x05249488, "willTerminate"),
    start("Start - provider: %p options: 0x%llx state: %lld", a2, a3, a4),
    end("End - provider: %p returning %s", a2, named("returning", boolean(a3))),
    other("pausing engine - mPlugin: %p", a2),

    event(0x05249490, "doClockSelectorSetup"),
    start("Start - clockSelectorID: %lld bNrInPins: %lld", a2, a3),
    end("End - mActiveClockSourceID: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "pin: %d clockSourceID: %d sampleRate: %d", hi(a2), lo(a2), lo(a3)),
    sel(1, "clock source not valid - clockSourceID: %lld pin: %lld", a2, a3),
    sel(2, "switching - clockSelectorID: %lld pin: %d ---> %d", a2, hi(a3), named("new pin", lo(a3))),
    sel(3, "ERROR: clockSelectorID: %lld pin: %d returned: 0x%08x", a2, hi(a3), lo(a3)),

    event(0x052494B8, "runPolledTask"),
    start("Start - mClockSourceID: %lld mTerminalID: %lld state: %lld", a2, a3, a4),
    end("End - changes: %lld timeout: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "clockSourceID: %lld valid: %s", a2, boolean(a3)),
    sel(1, "terminalID: %lld connected: %s", a2, boolean(a3)),
    sel(2, "ERROR: polling entity - entityID: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x052494C4, "message"),
    start("Start - type: 0x%08x provider: %p argument: %p", lo(a2), a3, a4),
    end("End - type: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "kOrvelUSBDeviceAudioMessageAltSettingSelected - alt (%lld) - passing along", named("alt", a2)),
    sel(1, "calling up to superclass - type: 0x%08x", lo(a2)),

    event(0x052494C8, "completionShim"),
    start("Start - owner: %p parameter: %p status: 0x%08x", a2, a3, lo(a4)),
    end("End - owner: %p bytesTransferred: %lld", a2, a3),
    other("dropping completion - engine: %p status: 0x%08x", a2, lo(a3)),
};

}  // namespace

constexpr Decoder kUsbEngine = decoder<kUsbEngineRows, "OrvelUSBAudioEngine">(audioClass(37), 15);

}  // namespace sonaprobe::decoders
