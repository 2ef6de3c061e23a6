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
    end("End - formats: %lld mPlugin: %p returning %s", a2, a3, named("returning", boolean(a4))),
    sel(0, "bAlternateSetting: %lld channelCount: %d bitsPerSample: %d", a2, hi(a3), lo(a3)),
    sel(1, "format not supported - bAlternateSetting: %lld wFormatTag: 0x%04x", a2, lo(a3)),

    event(0x0524980C, "stop"),
    start("Start - provider: %p mHALstreamRunning: %s mUSBdataStreamRunning: %s", a2, boolean(a3), boolean(a4)),
    end("End - mStreamInterface: %p isInactive: %s", a2, boolean(a3)),
    other("waiting for completions - listsInFlight: %lld", a2),

    event(0x05249830, "updateUSBFrameListInfo"),
    start("Start - sampleRate: %lld mTransactionsPerUSBFrame: %lld maxFrameSize: %lld", a2, a3, a4),
    end("End - mNumUSBFrameLists: %d mNumUSBFramesPerList: %d mNumUSBFrameListsToQueue: %d mUSBFrameListSize: %d", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x05249834, "CoalesceInputSamples"),
    verbose(start("Start - numBytesToCoalesce: %lld usbFrameListIndex: %lld mBufferOffset: %lld", a2, a3, a4)),
    verbose(end("End - mBufferOffset: %lld mBytesCoalesced: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "subtracting %lld bytes after wrap - new time: %d.%03d.%03d.%03d", named("bytes", a2), nanos(a3))),
    verbose(sel(1, "usbFrameIndex: %d frActCount: %d mBufferOffset: %lld", hi(a2), lo(a2), a3)),
    sel(2, "ERROR: frame not received - usbFrameIndex: %d status: 0x%08x bytes: %d mBufferOffset: %d", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x05249840, "controlledFormatChange"),
    start("Start - channelCount: %d bitsPerSample: %d sampleRate: %d ---> %d mHALstreamRunning: %s", hi(a2), lo(a2), hi(a3), named("new sampleRate", lo(a3)), boolean(a4)),
    end("End - bAlternateSetting: %lld sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bAlternateSetting: %lld wMaxPacketSize: %lld", a2, a3),
    sel(1, "ERROR: no bAlternateSetting - channelCount: %d bitsPerSample: %d sampleRate: %lld", hi(a2), lo(a2), a3),

    event(0x05249848, "updateSampleOffsetAndLatency"),
    start("Start - sampleRate: %lld mNumUSBFramesPerList: %lld wLockDelay: %lld", a2, a3, a4),
    end("End - sampleOffset: %lld sampleLatency: %lld", a2, a3),
    other("bDelay(frames): %lld mPlugin latency(frames): %lld", a2, a3),

    event(0x0524984C, "copyAnchor"),
    verbose(other("Frame: %lld time: %d.%03d.%03d.%03d", a2, nanos(a3))),

    // The long texts have four times and a flag for three words: mHostTime fills arg2, the others are
    // 32-bit nanoseconds, and incrementLoopCount sits beside the selector byte.
    event(0x05249850, "jitterFilter"),
    start("Start - time: %d.%03d.%03d.%03d mFilteredStamps: %lld", nanos(a2), a3),
    end("End - result: %d.%03d.%03d.%03d", nanos(a2)),
    sel(0, "incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d diff: %d.%03d.%03d.%03d avgdiff: %d.%03d.%03d.%03d jitter: %d.%03d.%03d.%03d", boolean(byte(1, a4)), nanos(a2), nanos(hi(a3)), nanos(lo(a3)), nanos(hi(a4))),
    sel(1, "incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d diff: %d.%03d.%03d.%03d", boolean(a2), nanos(a3), nanos(hi(a4))),
    sel(2, "incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d diff: %d.%03d.%03d.%03d avgdiff: %d.%03d.%03d.%03d jitter: %d.%03d.%03d.%03d <---- new high jitter", boolean(byte(1, a4)), nanos(a2), nanos(hi(a3)), nanos(lo(a3)), nanos(hi(a4))),

    event(0x05249854, "generateTimeStamp"),
    verbose(start("Start - usbFrameIndex: %lld preWrapBytes: %lld byteCount: %lld", a2, a3, a4)),
    verbose(end("End - time: %d.%03d.%03d.%03d", nanos(a2))),
    verbose(other("time stamp for usb frame %lld: %d.%03d.%03d.%03d", named("usb frame", a2), named("time stamp", nanos(a3)))),

    event(0x05249864, "configureAudioStream"),
    start("Start - bInterfaceNumber: %lld bAlternateSetting: %lld sampleRate: %lld", a2, a3, a4),
    end("End - mPipe: %p mFeedbackPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "endpoint: 0x%02x bmAttributes: 0x%02x wMaxPacketSize: %d bInterval: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "feedback endpoint: 0x%02x bRefresh: %d", lo(a2), lo(a3)),
    sel(2, "ERROR: packet too small - wMaxPacketSize: %lld maxFrameSize: %lld", a2, a3),

    event(0x0524986C, "closeStreamInterface"),
    start("Start - mStreamInterface: %p mPipe: %p mFeedbackPipe: %p", a2, a3, a4),
    end("End - mStreamInterface: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "returning bandwidth - bAlternateSetting: %lld result: 0x%08x", a2, lo(a3)),
    sel(1, "closing with last completion - listsInFlight: %lld", a2),

    event(0x05249870, "queueInputFrames"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx mNumUSBFrameListsToQueue: %lld", a2, a3, a4),
    end("End - mUSBFrameToQueue: 0x%llx listsInFlight: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "priming input - numFrames: %lld frame: %lld", a2, a3),
    sel(1, "ERROR: queueing frames - usbFrameListIndex: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x05249874, "queueOutputFrames"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx framesToDelay: %lld", a2, a3, a4),
    end("End - mUSBFrameToQueue: 0x%llx first frame: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "filling - usbFrameListIndex: %lld mBufferOffset: %lld", a2, a3),
    sel(1, "ERROR: queueing frames - usbFrameListIndex: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x05249880, "PrepareWriteFrameList"),
    verbose(start("Start - usbFrameListIndex: %lld mBufferOffset: %lld mSamplesPerUSBFrame: 0x%08x", a2, a3, lo(a4))),
    verbose(end("End - bytes: %lld mBufferOffset: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "usbFrameIndex: %d frReqCount: %d fraction: 0x%08x", hi(a2), lo(a2), lo(a3))),
    verbose(sel(1, "buffer wrap - usbFrameIndex: %lld preWrapBytes: %lld", a2, a3)),

    event(0x05249884, "PrepareAndReadFrameLists"),
    verbose(start("Start - usbFrameListIndex: %lld lists: %lld mUSBFrameToQueue: 0x%llx", a2, a3, a4)),
    verbose(end("End - lists: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "usbFrameListIndex: %lld bytes: %lld", a2, a3)),
    sel(1, "ERROR: usbPipe->Read returned: 0x%08x usbFrameListIndex: %lld", lo(a2), a3),

    event(0x05249888, "PrepareWriteFrameListForAlignedTransfers"),
    verbose(start("Start - usbFrameListIndex: %lld mBufferOffset: %lld alignment: %lld", a2, a3, a4)),
    verbose(end("End - bytes: %lld mBufferOffset: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "copying - usbFrameIndex: %d bytes: %d mBufferOffset: %lld", hi(a2), lo(a2), a3)),
    verbose(sel(1, "buffer wrap - usbFrameIndex: %lld preWrapBytes: %lld", a2, a3)),

    event(0x05249894, "primeInputPipeHandler"),
    verbose(start("Start - status: 0x%08x framesToDiscard: %lld", lo(a2), a3)),
    verbose(end("End - mInputPrimed: %s result: 0x%08x", boolean(a2), lo(a3))),
    sel(0, "ERROR: priming input - returned: 0x%08x", lo(a2)),
    verbose(sel(1, "input primed - frActCount: %lld frame: %lld", a2, a3)),

    event(0x05249898, "readFrameList"),
    verbose(start("Start - usbFrameListIndex: %lld currentUSBFrame: %lld mShouldStop: %lld", a2, a3, a4)),
    verbose(end("End - mUSBFrameToQueue: 0x%llx result: 0x%08x", a2, lo(a3))),
    verbose(other("calling usbPipe->Read - mUSBFrameToQueue: 0x%llx usbFrameListIndex: %lld", a2, a3)),

    event(0x0524989C, "readHandler"),
    verbose(start("Start - usbFrameListIndex: %lld status: 0x%08x currentUSBFrame: %lld", a2, lo(a3), a4)),
    verbose(end("End - usbFrameListIndex: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "usbFrameListIndex: %lld bytes: %lld", a2, a3)),
    sel(1, "ERROR: completion late - usbFrameListIndex: %lld late(frames): %lld", a2, a3),
    sel(2, "ERROR: resyncing - status: 0x%08x frame: %lld", lo(a2), a3),
    sel(3, "stopping - mShouldStop: %lld listsInFlight: %lld", a2, a3),

    event(0x052498A0, "processRead"),
    verbose(start("Start - usbFrameListIndex: %lld frame: %lld mBufferOffset: %lld", a2, a3, a4)),
    verbose(end("End - mBufferOffset: %lld wrapped: %s result: 0x%08x", a2, boolean(a3), lo(a4))),
    verbose(sel(0, "bytes: %lld postWrapBytes: %lld", a2, a3)),
    sel(1, "ERROR: input gap - usbFrameListIndex: %lld expected usbFrameListIndex: %lld", a2, a3),

    event(0x052498A8, "sampleRateHandler"),
    verbose(start("Start - status: 0x%08x frActCount: %lld mFeedbackFrame: %lld", lo(a2), a3, a4)),
    verbose(end("End - mFeedbackFrame: %lld result: 0x%08x", a2, lo(a3))),
    verbose(sel(0, "mSamplesPerUSBFrame: 0x%08x ---> 0x%08x", lo(a2), named("new mSamplesPerUSBFrame", lo(a3)))),
    sel(1, "ERROR: feedback out of range - feedback: 0x%08x sampleRate: %lld", lo(a2), a3),

    event(0x052498B8, "prepareUSBStream"),
    start("Start - mStreamInterface: %p bAlternateSetting: %lld sampleRate: %lld", a2, a3, a4),
    end("End - mPipe: %p framesToDelay: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "SET_CUR - endpoint: 0x%02x sampleRate: %lld", lo(a2), a3),
    sel(1, "mSampleBuffer: %p bytes: %lld", a2, a3),
    sel(2, "ERROR: SET_CUR sampleRate: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x052498BC, "startUSBStream"),
    start("Start - mShouldStop: %lld mStreamingSilence: %s mHALstreamRunning: %s", a2, boolean(a3), boolean(a4)),
    end("End - mHALstreamRunning: %s mUSBdataStreamRunning: %s result: 0x%08x", boolean(a2), boolean(a3), lo(a4)),
    sel(0, "replacing silence - frame: %lld", a2),
    sel(1, "waiting for completions - listsInFlight: %lld", a2),

    event(0x052498C0, "stopUSBStream"),
    start("Start - mShouldStop: %lld listsInFlight: %lld keepSilence: %s", a2, a3, boolean(a4)),
    // Four values for three words: a flag shares one with the result.
    end("End - mStreamingSilence: %s mHALstreamRunning: %s mUSBdataStreamRunning: %s returning 0x%08x", boolean(a2), boolean(a3), boolean(hi(a4)), named("returning", lo(a4))),
    sel(0, "stream has run - seconds: %llu", seconds(a2, a3)),  // trace clock stamps: start, now
    sel(1, "aborting - usbPipe: %p result: 0x%08x", a2, lo(a3)),
    sel(2, "continuing with silence - frame: %lld", a2),

    event(0x052498C4, "willTerminate"),
    start("Start - provider: %p options: 0x%llx mUSBdataStreamRunning: %s", a2, a3, boolean(a4)),
    end("End - mStreamInterface: %p returning %s", a2, named("returning", boolean(a3))),
    other("stopping - listsInFlight: %lld", a2),

    event(0x052498CC, "writeFrameList"),
    verbose(start("Start - usbFrameListIndex: %lld mUSBFrameToQueue: 0x%llx currentUSBFrame: %lld", a2, a3, a4)),
    verbose(end("End - mUSBFrameToQueue: 0x%llx bytes: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "DEVICE MODE: calling usbPipe->Write for next frame. curFrame: %lld", a2)),
    sel(1, "ERROR: usbPipe->Write returned: 0x%08x usbFrameListIndex: %lld", lo(a2), a3),
    sel(2, "ERROR: output gap - frame: %lld late(frames): %lld", a2, a3),

    event(0x052498D4, "processWrite"),
    verbose(start("Start - usbFrameListIndex: %lld status: 0x%08x frame: %lld", a2, lo(a3), a4)),
    verbose(end("End - mBytesSent: %lld usbFrameListIndex: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(sel(0, "subtracting %lld uFrames after wrap - new time: %d.%03d.%03d.%03d", named("uFrames", a2), nanos(a3))),
    verbose(sel(1, "frames: %lld mBytesSent: %lld", a2, a3)),
    sel(2, "ERROR: frame not sent - usbFrameIndex: %d bytes sent: %d bytes: %lld", hi(a2), lo(a2), a3),

    event(0x052498DC, "takeTimeStamp"),
    verbose(start("Start - incrementLoopCount: %s time: %d.%03d.%03d.%03d", boolean(a2), nanos(a3))),
    verbose(end("End - mHostTime: %d.%03d.%03d.%03d loopCount: %lld", nanos(a2), a3)),
    sel(0, "ANCHOR: incrementLoopCount: %s mHostTime: %d.%03d.%03d.%03d", boolean(a2), nanos(a3)),
    sel(1, "ERROR: time going back - last time: %d.%03d.%03d.%03d time: %d.%03d.%03d.%03d", nanos(a2), nanos(a3)),

    event(0x052498FC, "pluginDeviceRequest"),
    start("Start - mPlugin: %p bRequest: 0x%02x wValue: 0x%04x wIndex: 0x%04x wLength: %d", a2, hi(a3), lo(a3), hi(a4), lo(a4)),
    end("End - mPlugin: %p wLenDone: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("ERROR: interface closed - mStreamInterface: %p", a2),

    event(0x0524990C, "watchdogTimer"),
    verbose(start("Start - mWatchdogTimer: %p completions: %lld", a2, a3)),
    verbose(end("End - mWatchdogTimer: %p mUSBdataStreamRunning: %s", a2, boolean(a3))),
    sel(0, "ERROR: no completion - seconds: %llu", seconds(a2, a3)),  // trace clock stamps: last completion, now
    sel(1, "ERROR: calling resyncAudio - frame: %lld currentUSBFrame: %lld", a2, a3),

    event(0x05249910, "rearmWatchdog"),
    verbose(other("mWatchdogTimer: %p timeout: %d.%03d.%03d.%03d frame: %lld", a2, nanos(a3), a4)),

    event(0x05249914, "resyncAudio"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx lost frames: %lld", a2, a3, a4),
    end("End - mUSBFrameToQueue: 0x%llx attempts: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "aborting - listsInFlight: %lld result: 0x%08x", a2, lo(a3)),
    sel(1, "ERROR: stream stays stopped - attempts: %lld", a2),

    event(0x05249918, "message"),
    start("Start - type: 0x%08x provider: %p argument: %p", lo(a2), a3, a4),
    end("End - type: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "clearing stall - mPipe: %p result: 0x%08x", a2, lo(a3)),
    sel(1, "selected by host - bAlternateSetting: %lld ---> %lld", a2, named("new bAlternateSetting", a3)),
    sel(2, "closed by provider - mStreamInterface: %p", a2),

    event(0x0524991C, "ConfigureNewAlternateInterface"),
    start("Start - bAlternateSetting: %lld ---> %lld mUSBdataStreamRunning: %s", a2, named("new bAlternateSetting", a3), boolean(a4)),
    end("End - bAlternateSetting: %lld mPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "stopped by host - bAlternateSetting: %lld", a2),
    sel(1, "opening - bAlternateSetting: %lld mPipe: %p", a2, a3),

    event(0x05249920, "StartSilenceStream"),
    start("Start - currentUSBFrame: %lld mUSBFrameToQueue: 0x%llx mHALstreamRunning: %s", a2, a3, boolean(a4)),
    end("End - mStreamingSilence: %s result: 0x%08x", boolean(a2), lo(a3)),
    verbose(sel(0, "queueing silence - usbFrameListIndex: %lld bytes: %lld", a2, a3)),
    sel(1, "ERROR: queueing silence - returned: 0x%08x", lo(a2)),

    event(0x05249924, "SilenceHandler"),
    verbose(start("Start - usbFrameListIndex: %lld status: 0x%08x mHALstreamRunning: %s", a2, lo(a3), boolean(a4))),
    verbose(end("End - mStreamingSilence: %s mUSBFrameToQueue: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4))),
    other("ending silence - frame: %lld listsInFlight: %lld", a2, a3),

    event(0x05249928, "protectedCloseInterface"),
    start("Start - mStreamInterface: %p listsInFlight: %lld isInactive: %s", a2, a3, boolean(a4)),
    end("End - mStreamInterface: %p mPipe: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "aborting - mPipe: %p result: 0x%08x", a2, lo(a3)),
    sel(1, "ERROR: completions timed out - listsInFlight: %lld waited: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524992C, "collectTimeStamps"),
    verbose(start("Start - usbFrameListIndex: %lld first frame: %lld numFrames: %lld", a2, a3, a4)),
    verbose(end("End - last frame: %lld time: %d.%03d.%03d.%03d unstamped frames: %lld", a2, nanos(a3), a4)),
    verbose(other("FrStatus[%d]: 0x%08x timestamp(%d.%03d.%03d.%03d)", named("index", lo(a2)), named("FrStatus", lo(a3)), named("timestamp", nanos(a4)))),

    event(0x05249930, "closeInterface"),
    start("Start - mStreamInterface: %p open clients: %lld", a2, a3),
    end("End - mStreamInterface: %p open clients: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("never opened - mStreamInterface: %p", a2),

    event(0x05249934, "completionShim"),
    start("Start - owner: %p usbFrameListIndex: %lld status: 0x%08x", a2, a3, lo(a4)),
    end("End - usbFrameListIndex: %lld bytesTransferred: %lld", a2, a3),
    other("dropping completion - usbFrameListIndex: %lld listsInFlight: %lld", a2, a3),

    event(0x05249938, "doStartUSBStream"),
    // Four values for three words: a flag shares one with the delay.
    start("Start - currentUSBFrame: %lld framesToDelay: %d mHALstreamRunning: %s mUSBdataStreamRunning: %s", a2, hi(a3), boolean(lo(a3)), boolean(a4)),
    end("End - mUSBFrameToQueue: 0x%llx mUSBdataStreamRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "starting with frame: %lld time: %d.%03d.%03d.%03d", named("frame", a2), nanos(a3)),
    sel(1, "ERROR: queueing frames - returned: 0x%08x", lo(a2)),
};

}  // namespace

constexpr Decoder kUsbStream = decoder<kUsbStreamRows, "OrvelUSBAudioStream">(audioClass(38), 42);

}  // namespace sonaprobe::decoders
