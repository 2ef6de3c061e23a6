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
    start("Start - provider: %p mPlugin: %p getState(): %lld", a2, a3, a4),
    end("End - mUSBAudioDevice: %p streams: %lld", a2, a3),
    other("terminating stream: %p index: %lld", a2, a3),

    event(0x05249428, "clipOutputSamples"),
    verbose(start("Start - stream: %p firstSampleFrame: %lld numSampleFrames: %lld", a2, a3, a4)),
    verbose(end("End - stream: %p next firstSampleFrame: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(other("non-mixable stream first 16 bytes: 0x%16llx%16llx offset: %llu", a2, a3, a4)),  // sic: blanks fill both words

    event(0x0524942C, "controlledFormatChange"),
    start("Start - stream: %p sampleRate: %d ---> %d getState(): %lld", a2, hi(a3), lo(a3), a4),
    end("End - stream: %p sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "format and sampleRate: %lld are already set", a2),
    sel(1, "passing sampleRate: %lld on to mPlugin: %p", a2, a3),
    sel(2, "clock source ID: %d set to sampleRate: %d, device reads back: %d", hi(a2), lo(a2), lo(a3)),
    sel(3, "ERROR: stream: %p returned: 0x%08x", a2, lo(a3)),

    event(0x05249430, "processInputStream"),
    verbose(start("Start - stream: %p destBuf: %p numSampleFrames: %lld", a2, a3, a4)),
    verbose(end("End - stream: %p numSampleFrames done: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "calling convertFromOrvelUSBAudioInputStream_NoWrap - firstSampleFrame: %lld numSampleFrames: %lld", a2, a3)),
    verbose(sel(1, "calling memcpy of %lld bytes", a2)),

    event(0x05249434, "convertInputSamples"),
    verbose(start("Start - destBuf: %p firstSampleFrame: %lld numSampleFrames: %lld", a2, a3, a4)),
    verbose(end("End - mBytesCoalesced: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "reading stream: %p from byte offset: %lld", a2, a3)),
    sel(1, "ERROR: stream: %p has not received firstSampleFrame: %lld yet - reading old samples", a2, a3),

    event(0x0524944C, "initHardware"),
    start("Start - provider: %p mUSBAudioDevice: %p streaming interfaces: %lld", a2, a3, a4),
    end("End - streams: %lld mPlugin: %p returning %s", a2, a3, boolean(a4)),
    sel(0, "created %s stream: %p for bInterfaceNumber: %d", either(a2, "output", "input"), a3, hi(a4)),
    sel(1, "sampleRate: %lld numSampleFramesPerBuffer: %lld", a2, a3),
    sel(2, "ERROR: bInterfaceNumber: %lld has no supported format - no stream: 0x%08x", a2, lo(a3)),

    event(0x05249468, "pluginDeviceRequest"),
    start("Start - bmRequestType: 0x%02x bRequest: 0x%02x wValue: 0x%04x wIndex: 0x%04x wLength: %d", hi(a2), lo(a2), hi(a3), lo(a3), lo(a4)),
    end("End - wLenDone: %lld result: 0x%08x", a2, lo(a3)),

    event(0x05249474, "performAudioEngineStart"),
    start("Start - mStreamArray: %p sampleRate: %lld getState(): %lld", a2, a3, a4),
    end("End - running streams: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "starting %s stream: %p", either(a2, "output", "input"), a3),
    sel(1, "stream: %p already runs for another client - count: %lld", a2, a3),
    sel(2, "ERROR: stream: %p did not start: 0x%08x - stopping the others", a2, lo(a3)),

    event(0x05249478, "performAudioEngineStop"),
    start("Start - running streams: %lld getState(): %lld isInactive: %s", a2, a3, boolean(a4)),
    end("End - streams still closing: %lld result: 0x%08x", a2, lo(a3)),
    other("stopping stream: %p at loop count: %lld", a2, a3),

    event(0x05249488, "willTerminate"),
    start("Start - provider: %p options: 0x%llx getState(): %lld", a2, a3, a4),
    end("End - provider: %p returning %s", a2, boolean(a3)),
    other("pausing engine so that mPlugin: %p lets go of the device", a2),

    event(0x05249490, "doClockSelectorSetup"),
    start("Start - clock selector ID: %lld bNrInPins: %lld", a2, a3),
    end("End - mActiveClockSourceID: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "pin: %d clock source ID: %d sampleRate: %d", hi(a2), lo(a2), lo(a3)),
    sel(1, "clock source ID: %lld on pin: %lld is not valid - trying next pin", a2, a3),
    sel(2, "switching clock selector ID: %lld from pin: %d to pin: %d", a2, hi(a3), lo(a3)),
    sel(3, "ERROR: clock selector ID: %lld refused pin: %d: 0x%08x", a2, hi(a3), lo(a3)),

    event(0x052494B8, "runPolledTask"),
    start("Start - mClockSourceID: %lld mTerminalID: %lld getState(): %lld", a2, a3, a4),
    end("End - changes found: %lld next poll in %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(0, "clock source ID: %lld turned %s", a2, either(a3, "valid", "invalid")),
    sel(1, "terminal ID: %lld is now %s", a2, either(a3, "connected", "disconnected")),
    sel(2, "ERROR: entity ID: %lld did not answer: 0x%08x", a2, lo(a3)),

    event(0x052494C4, "message"),
    start("Start - type: 0x%08x provider: %p argument: %p", lo(a2), a3, a4),
    end("End - type: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "kOrvelUSBDeviceAudioMessageAltSettingSelected - alt (%lld) - passing along", a2),
    sel(1, "type: 0x%08x is not for the streams - calling super", lo(a2)),

    event(0x052494C8, "completionShim"),
    start("Start - owner: %p parameter: %p status: 0x%08x", a2, a3, lo(a4)),
    end("End - owner: %p bytesTransferred: %lld", a2, a3),
    other("engine: %p is gone - dropping completion with status: 0x%08x", a2, lo(a3)),
};

}  // namespace

constexpr Decoder kUsbEngine = decoder<kUsbEngineRows, "OrvelUSBAudioEngine">(audioClass(37), 15);

}  // namespace sonaprobe::decoders
