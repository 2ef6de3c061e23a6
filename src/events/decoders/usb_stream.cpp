// USB audio, the stream (class 38): the frame lists that keep the bus busy, the samples copied to
// and from them, and the time stamps taken where the sample buffer wraps.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kUsbStreamRows[] = {
    event(0x05249800, "free"),
    start("Start - mSampleBuffer: %p mFrameListArray: %p mStreamInterface: %p", a2, a3, a4),
    end("End"),

    event(0x05249804, "initWithAudioEngine"),
    start("Start - engine: %p bInterfaceNumber: %lld direction: %s", a2, a3, either(a4, "output", "input")),
    end("End - formats: %lld mPlugin: %p returning %s", a2, a3, boolean(a4)),
    sel(0, "bAlternateSetting: %lld numChannels: %d bitDepth: %d", a2, hi(a3), lo(a3)),
    sel(1, "bAlternateSetting: %lld has unknown wFormatTag: 0x%04x - skipping", a2, lo(a3)),

    event(0x0524980C, "stop"),
    start("Start - provider: %p mHALstreamRunning: %s mUSBdataStreamRunning: %s", a2, boolean(a3), boolean(a4)),
    end("End - mStreamInterface: %p isInactive: %s", a2, boolean(a3)),
    other("waiting for %lld frame lists in flight", a2),

    event(0x05249830, "updateUSBFrameListInfo"),
    start("Start - sampleRate: %lld mTransactionsPerUSBFrame: %lld maxFrameSize: %lld", a2, a3, a4),
    end("End - mNumUSBFrameLists: %d mNumUSBFramesPerList: %d mNumUSBFrameListsToQueue: %d mUSBFrameListSize: %d", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x05249834, "CoalesceInputSamples"),
    verbose(start("Start - numBytesToCoalesce: %lld usbFrameListIndex: %lld mBufferOffset: %lld", a2, a3, a4)),
    verbose(end("End - mBufferOffset: %lld bytes coalesced: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "subtracting %lld bytes after wrap - new time: %d.%03d.%03d.%03d", a2, nanos(a3))),
    verbose(sel(1, "usbFrameIndex: %d frActCount: %d to mBufferOffset: %lld", hi(a2), lo(a2), a3)),
    sel(2, "ERROR: usbFrameIndex: %d status: 0x%08x - %d bytes left out at mBufferOffset: %d", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x05249840, "controlledFormatChange"),
    start("Start - numChannels: %d bitDepth: %d sampleRate: %d ---> %d mHALstreamRunning: %s", hi(a2), lo(a2), hi(a3), lo(a3), boolean(a4)),
    end("End - bAlternateSetting: %lld sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "format is carried by bAlternateSetting: %lld wMaxPacketSize: %lld", a2, a3),
    sel(1, "ERROR: no bAlternateSetting for numChannels: %d bitDepth: %d sampleRate: %lld", hi(a2), lo(a2), a3),

    event(0x05249848, "updateSampleOffsetAndLatency"),
    start("Start - sampleRate: %lld mNumUSBFramesPerList: %lld wLockDelay: %lld", a2, a3, a4),
    end("End - sampleOffset: %lld sampleLatency: %lld", a2, a3),
    other("device reports bDelay: %lld frames, mPlugin adds %lld samples", a2, a3),

    event(0x0524984C, "copyAnchor"),
    verbose(other("Frame: %lld time: %d.%03d.%03d.%03d", a2, nanos(a3))),

    // Four times and a flag in three words: mHostTime fills arg2, the others are 32-bit nanoseconds
    // where they share a word, and incrementLoopCount sits beside the selector byte.
    event(0x05249850, "jitterFilter"),
    start("Start - time: %d.%03d.%03d.%03d mFilteredStamps: %lld", nanos(a2), a3),
    end("End - result: %d.%03d.%03d.%03d", nanos(a2)),
    sel(0, "incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d diff: %d.%03d.%03d.%03d avgdiff: %d.%03d.%03d.%03d jitter: %d.%03d.%03d.%03d", boolean(byte(1, a4)), nanos(a2), nanos(hi(a3)), nanos(lo(a3)), nanos(hi(a4))),
    sel(1, "incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d diff: %d.%03d.%03d.%03d", boolean(byte(1, a4)), nanos(a2), nanos(a3)),
    sel(2, "incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d diff: %d.%03d.%03d.%03d avgdiff: %d.%03d.%03d.%03d jitter: %d.%03d.%03d.%03d <---- new high jitter", boolean(byte(1, a4)), nanos(a2), nanos(hi(a3)), nanos(lo(a3)), nanos(hi(a4))),

    event(0x05249854, "generateTimeStamp"),
    verbose(start("Start - usbFrameIndex: %lld preWrapBytes: %lld byteCount: %lld", a2, a3, a4)),
    verbose(end("End - time: %d.%03d.%03d.%03d", nanos(a2))),
    verbose(other("time stamp for usb frame %lld: %d.%03d.%03d.%03d", a2, nanos(a3))),

    event(0x05249864, "configureAudioStream"),
    start("Start - bInterfaceNumber: %lld bAlternateSetting: %lld sampleRate: %lld", a2, a3, a4),
    end("End - mPipe: %p mFeedbackPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "endpoint: 0x%02x bmAttributes: 0x%02x wMaxPacketSize: %d bInterval: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "feedback endpoint: 0x%02x bRefresh: %d", lo(a2), lo(a3)),
    sel(2, "ERROR: wMaxPacketSize: %lld is too small for %lld bytes per frame", a2, a3),

    event(0x0524986C, "closeStreamInterface"),
    start("Start - mStreamInterface: %p mPipe: %p mFeedbackPipe: %p", a2, a3, a4),
    end("End - mStreamInterface: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "returning bandwidth with bAlternateSetting: 0 - result: 0x%08x", lo(a2)),
    sel(1, "frame lists in flight: %lld - the last completion will close", a2),

    event(0x05249870, "queueInputFrames"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx mNumUSBFrameListsToQueue: %lld", a2, a3, a4),
    end("End - mUSBFrameToQueue: 0x%llx frame lists in flight: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "priming input with %lld frames from frame: %lld", a2, a3),
    sel(1, "ERROR: usbFrameListIndex: %lld was not queued: 0x%08x", a2, lo(a3)),

    event(0x05249874, "queueOutputFrames"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx lead: %lld frames", a2, a3, a4),
    end("End - mUSBFrameToQueue: 0x%llx first frame on the bus: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "filling usbFrameListIndex: %lld from mBufferOffset: %lld", a2, a3),
    sel(1, "ERROR: writing usbFrameListIndex: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x05249880, "PrepareWriteFrameList"),
    verbose(start("Start - usbFrameListIndex: %lld mBufferOffset: %lld mSamplesPerUSBFrame: 0x%llx", a2, a3, a4)),
    verbose(end("End - bytes to send: %lld mBufferOffset: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "usbFrameIndex: %d frReqCount: %d fraction carried: 0x%08x", hi(a2), lo(a2), lo(a3))),
    verbose(sel(1, "sample buffer wraps in usbFrameIndex: %lld with %lld bytes before the wrap", a2, a3)),

    event(0x05249884, "PrepareAndReadFrameLists"),
    verbose(start("Start - usbFrameListIndex: %lld lists: %lld mUSBFrameToQueue: 0x%llx", a2, a3, a4)),
    verbose(end("End - lists queued: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "usbFrameListIndex: %lld asks for %lld bytes", a2, a3)),
    sel(1, "ERROR: usbPipe->Read returned: 0x%08x usbFrameListIndex: %lld", lo(a2), a3),

    event(0x05249888, "PrepareWriteFrameListForAlignedTransfers"),
    verbose(start("Start - usbFrameListIndex: %lld mBufferOffset: %lld alignment: %lld", a2, a3, a4)),
    verbose(end("End - bytes with padding: %lld mBufferOffset: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "usbFrameIndex: %d copies %d bytes to aligned offset: %lld", hi(a2), lo(a2), a3)),
    verbose(sel(1, "sample buffer wraps in usbFrameIndex: %lld - splitting the copy after %lld bytes", a2, a3)),

    event(0x05249894, "primeInputPipeHandler"),
    verbose(start("Start - status: 0x%08x frames still to discard: %lld", lo(a2), a3)),
    verbose(end("End - mInputPrimed: %s result: 0x%08x", boolean(a2), lo(a3))),
    sel(0, "ERROR: priming failed: 0x%08x - input starts without it", lo(a2)),
    verbose(sel(1, "pipe delivers frActCount: %lld - input is primed at frame: %lld", a2, a3)),

    event(0x05249898, "readFrameList"),
    verbose(start("Start - usbFrameListIndex: %lld currentUSBFrame: %lld mShouldStop: %lld", a2, a3, a4)),
    verbose(end("End - mUSBFrameToQueue: 0x%llx result: 0x%08x", a2, lo(a3))),
    verbose(other("calling usbPipe->Read - mUSBFrameToQueue: 0x%llx usbFrameListIndex: %lld", a2, a3)),

    event(0x0524989C, "readHandler"),
    verbose(start("Start - usbFrameListIndex: %lld status: 0x%08x currentUSBFrame: %lld", a2, lo(a3), a4)),
    verbose(end("End - next usbFrameListIndex: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "expected usbFrameListIndex: %lld bytes: %lld", a2, a3)),
    sel(1, "ERROR: usbFrameListIndex: %lld came back %lld frames late", a2, a3),
    sel(2, "ERROR: status: 0x%08x - resyncing from frame: %lld", lo(a2), a3),
    sel(3, "mShouldStop: %lld - not queueing again, lists in flight: %lld", a2, a3),

    event(0x052498A0, "processRead"),
    verbose(start("Start - usbFrameListIndex: %lld first frame: %lld mBufferOffset: %lld", a2, a3, a4)),
    verbose(end("End - mBufferOffset: %lld buffer wrapped: %s", a2, boolean(a3))),
    verbose(sel(0, "frame list holds %lld bytes, %lld after the wrap", a2, a3)),
    sel(1, "ERROR: usbFrameListIndex: %lld is not the next one: %lld - input has a gap", a2, a3),

    event(0x052498A8, "sampleRateHandler"),
    verbose(start("Start - status: 0x%08x frActCount: %lld mFeedbackFrame: %lld", lo(a2), a3, a4)),
    verbose(end("End - next mFeedbackFrame: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "mSamplesPerUSBFrame: 0x%llx ---> 0x%llx", a2, a3)),
    sel(1, "ERROR: feedback: 0x%08x is out of range for sampleRate: %lld - ignoring", lo(a2), a3),

    event(0x052498B8, "prepareUSBStream"),
    start("Start - mStreamInterface: %p bAlternateSetting: %lld sampleRate: %lld", a2, a3, a4),
    end("End - mPipe: %p framesToDelay: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "endpoint: 0x%02x set to sampleRate: %lld", lo(a2), a3),
    sel(1, "sample buffer: %p size: %lld", a2, a3),
    sel(2, "ERROR: device did not take sampleRate: %lld: 0x%08x", a2, lo(a3)),

    event(0x052498BC, "startUSBStream"),
    start("Start - mShouldStop: %lld mStreamingSilence: %s mHALstreamRunning: %s", a2, boolean(a3), boolean(a4)),
    end("End - mHALstreamRunning: %s mUSBdataStreamRunning: %s result: 0x%08x", boolean(a2), boolean(a3), lo(a4)),
    sel(0, "silence is on the bus - taking over its frame lists at frame: %lld", a2),
    sel(1, "last run still has %lld frame lists in flight - waiting for them", a2),

    event(0x052498C0, "stopUSBStream"),
    start("Start - mShouldStop: %lld frame lists in flight: %lld keepSilence: %s", a2, a3, boolean(a4)),
    end("End - mStreamingSilence: %s mHALstreamRunning: %s mUSBdataStreamRunning: %s returning 0x%08x", boolean(a2), boolean(hi(a3)), boolean(lo(a3)), lo(a4)),
    sel(0, "stream has run for %llu seconds", seconds(a2, a3)),  // trace clock stamps: start, now
    sel(1, "aborting usbPipe: %p returned: 0x%08x", a2, lo(a3)),
    sel(2, "device needs an unbroken stream - going on with silence at frame: %lld", a2),

    event(0x052498C4, "willTerminate"),
    start("Start - provider: %p options: 0x%llx mUSBdataStreamRunning: %s", a2, a3, boolean(a4)),
    end("End - mStreamInterface: %p returning %s", a2, boolean(a3)),
    other("stopping while %lld frame lists are in flight", a2),

    event(0x052498CC, "writeFrameList"),
    verbose(start("Start - usbFrameListIndex: %lld mUSBFrameToQueue: 0x%llx currentUSBFrame: %lld", a2, a3, a4)),
    verbose(end("End - mUSBFrameToQueue: 0x%llx bytes: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "DEVICE MODE: calling usbPipe->Write for next frame. curFrame: %lld", a2)),
    sel(1, "ERROR: usbPipe->Write returned: 0x%08x usbFrameListIndex: %lld", lo(a2), a3),
    sel(2, "ERROR: frame: %lld was due %lld frames ago - output has a gap", a2, a3),

    event(0x052498D4, "processWrite"),
    verbose(start("Start - usbFrameListIndex: %lld status: 0x%08x frame: %lld", a2, lo(a3), a4)),
    verbose(end("End - mBytesSent: %lld next usbFrameListIndex: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "subtracting %lld uFrames after wrap - new time: %d.%03d.%03d.%03d", a2, nanos(a3))),
    verbose(sel(1, "frames sent: %lld mBytesSent: %lld", a2, a3)),
    sel(2, "ERROR: usbFrameIndex: %d sent only %d of %lld bytes", hi(a2), lo(a2), a3),

    event(0x052498DC, "takeTimeStamp"),
    verbose(start("Start - incrementLoopCount: %s time: %d.%03d.%03d.%03d", boolean(a2), nanos(a3))),
    verbose(end("End - mHostTime: %d.%03d.%03d.%03d loop count: %lld", nanos(a2), a3)),
    sel(0, "ANCHOR: incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d", boolean(a2), nanos(a3)),
    sel(1, "ERROR: time goes back - last: %d.%03d.%03d.%03d new: %d.%03d.%03d.%03d", nanos(a2), nanos(a3)),

    event(0x052498FC, "pluginDeviceRequest"),
    start("Start - mPlugin: %p bRequest: 0x%02x wValue: 0x%04x wIndex: 0x%04x wLength: %d", a2, hi(a3), lo(a3), hi(a4), lo(a4)),
    end("End - mPlugin: %p wLenDone: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("ERROR: mStreamInterface: %p is closed - request not sent", a2),

    event(0x0524990C, "watchdogTimer"),
    verbose(start("Start - mWatchdogTimer: %p completions since last time: %lld", a2, a3)),
    verbose(end("End - mWatchdogTimer: %p mUSBdataStreamRunning: %s", a2, boolean(a3))),
    sel(0, "ERROR: nothing completed for %llu seconds", seconds(a2, a3)),  // trace clock stamps: last completion, now
    sel(1, "ERROR: completions stopped at frame: %lld currentUSBFrame: %lld - calling resyncAudio", a2, a3),

    event(0x05249910, "rearmWatchdog"),
    verbose(other("mWatchdogTimer: %p fires in %d.%03d.%03d.%03d if frame: %lld does not complete", a2, nanos(a3), a4)),

    event(0x05249914, "resyncAudio"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx frames lost: %lld", a2, a3, a4),
    end("End - mUSBFrameToQueue: 0x%llx attempts: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "aborting frame lists in flight: %lld result: 0x%08x", a2, lo(a3)),
    sel(1, "too many attempts: %lld - leaving stream stopped", a2),

    event(0x05249918, "message"),
    start("Start - type: 0x%08x provider: %p argument: %p", lo(a2), a3, a4),
    end("End - type: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "pipe stall reported on mPipe: %p - clearing it returned: 0x%08x", a2, lo(a3)),
    sel(1, "host selected bAlternateSetting: %lld, stream has: %lld", a2, a3),
    sel(2, "mStreamInterface: %p is closed by its provider", a2),

    event(0x0524991C, "ConfigureNewAlternateInterface"),
    start("Start - bAlternateSetting: %lld ---> %lld mUSBdataStreamRunning: %s", a2, a3, boolean(a4)),
    end("End - bAlternateSetting: %lld mPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bAlternateSetting: %lld has no endpoint - host has stopped the stream", a2),
    sel(1, "bAlternateSetting: %lld opens mPipe: %p", a2, a3),

    event(0x05249920, "StartSilenceStream"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx mHALstreamRunning: %s", a2, a3, boolean(a4)),
    end("End - mStreamingSilence: %s result: 0x%08x", boolean(a2), lo(a3)),
    verbose(sel(0, "queueing silence in usbFrameListIndex: %lld bytes: %lld", a2, a3)),
    sel(1, "ERROR: no silence on the bus: 0x%08x", lo(a2)),

    event(0x05249924, "SilenceHandler"),
    verbose(start("Start - usbFrameListIndex: %lld status: 0x%08x mHALstreamRunning: %s", a2, lo(a3), boolean(a4))),
    verbose(end("End - mStreamingSilence: %s mUSBFrameToQueue: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4))),
    other("silence ends before frame: %lld, lists still in flight: %lld", a2, a3),

    event(0x05249928, "protectedCloseInterface"),
    start("Start - mStreamInterface: %p frame lists in flight: %lld isInactive: %s", a2, a3, boolean(a4)),
    end("End - mStreamInterface: %p mPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "aborting mPipe: %p returned: 0x%08x", a2, lo(a3)),
    sel(1, "ERROR: frame lists in flight: %lld did not return within %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524992C, "collectTimeStamps"),
    verbose(start("Start - usbFrameListIndex: %lld first frame: %lld numFrames: %lld", a2, a3, a4)),
    verbose(end("End - last frame: %lld time: %d.%03d.%03d.%03d", a2, nanos(a3))),
    verbose(sel(0, "FrStatus[%d]: 0x%08x timestamp(%d.%03d.%03d.%03d)", hi(a2), lo(a2), nanos(a3))),
    verbose(sel(1, "frames without a time stamp: %lld of %lld", a2, a3)),

    event(0x05249930, "closeInterface"),
    start("Start - mStreamInterface: %p open clients: %lld", a2, a3),
    end("End - mStreamInterface: %p open clients: %lld", a2, a3),
    other("mStreamInterface: %p was never opened", a2),

    event(0x05249934, "completionShim"),
    start("Start - owner: %p usbFrameListIndex: %lld status: 0x%08x", a2, a3, lo(a4)),
    end("End - usbFrameListIndex: %lld bytesTransferred: %lld", a2, a3),
    other("stream is closing - usbFrameListIndex: %lld goes no further, lists in flight: %lld", a2, a3),

    event(0x05249938, "doStartUSBStream"),
    start("Start - currentUSBFrame: %lld framesToDelay: %d mHALstreamRunning: %s mUSBdataStreamRunning: %s", a2, lo(a3), boolean(hi(a4)), boolean(lo(a4))),
    end("End - mUSBFrameToQueue: 0x%llx mUSBdataStreamRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "starting with frame: %lld time: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: frames were not queued: 0x%08x - stream stays stopped", lo(a2)),
};

}  // namespace

constexpr Decoder kUsbStream = decoder<kUsbStreamRows, "OrvelUSBAudioStream">(audioClass(38), 42);

}  // namespace sonaprobe::decoders
