// A USB headset: plugged in and set up, started by a client, streaming with jitter, its volume
// wheel turned, and unplugged while it plays.

#include "sim/stories/server.h"
#include "sim/stories/stories.h"

namespace sonaprobe::sim {
namespace {

enum Role : uint8_t { matching, client, ioThread, completion, timer };
constexpr Thread kThreads[] = {{0x2a1, 1}, {0x1d0e, 4}, {0x1d21, 6}, {0xb7, 0}, {0xc2, 2}};

enum Variable : uint8_t {
    plugged = firstOwnVariable,
    streaming,
    list,         // index of the frame list that completes next
    frame,        // its first USB frame
    bytesSent,
    offset,       // into the sample buffer
    stamps,
    stampTime,
    updates,
    began,
};

constexpr Object kHub{0xffffff80'31020800};
constexpr Object kUsbDevice{0xffffff80'31045000};
constexpr Object kDevice{0xffffff80'3146a000};
constexpr Object kControlInterface{0xffffff80'31481200};
constexpr Object kStatusPipe{0xffffff80'31482a80};
constexpr Object kTimeLock{0xffffff80'3148f0c0};
constexpr Object kUpdateTimer{0xffffff80'31493340};
constexpr Object kWorkLoop{0xffffff80'31493a00};
constexpr Object kEngine{0xffffff80'314b8000};
constexpr Object kEngines{0xffffff80'31495100};
constexpr Object kStreams{0xffffff80'314961c0};
constexpr Object kOutput{0xffffff80'314c2000};
constexpr Object kInput{0xffffff80'314c6000};
constexpr Object kOutputInterface{0xffffff80'314d1600};
constexpr Object kPipe{0xffffff80'314d8400};
constexpr Object kHostPipe{0xffffff80'314d9000};
constexpr Object kSampleBuffer{0xffffff81'0a4c0000};
constexpr Object kFrameLists{0xffffff80'314e2000};
constexpr Object kWatchdog{0xffffff80'314e5cc0};
constexpr Object kUserClient{0xffffff80'31507800};

enum EngineState : uint64_t { stopped, runs, paused };
constexpr uint64_t kAwake = 2;
constexpr uint32_t kRequestTerminate = 0x100000;  // an option of willTerminate

// Full speed: a frame a millisecond with 48 frames of 16-bit stereo, eight of them in a list. The
// sample buffer holds 96 ms.
constexpr uint64_t kFramesPerList = 8;
constexpr uint64_t kLists = 128;
constexpr uint64_t kListsInFlight = 4;
constexpr uint64_t kBytesPerList = kFramesPerList * 48 * 4;
constexpr uint64_t kListsPerBuffer = 12;
constexpr Value kCurrentFrame = var(frame, kFramesPerList);
constexpr Value kFrameToQueue = var(frame, kListsInFlight * kFramesPerList);
constexpr uint64_t kBufferBytes = kListsPerBuffer * kBytesPerList;

constexpr Step kSetUpControls[] = {
    start(usbDevice::kDoControlStuff, kDevice, kEngine, 1, 1),
        sel(0, usbDevice::kDoControlStuff, kDevice, pair(3, 0x0302), pair(2, 2)),
        wait(us(900), us(1300)),
        sel(1, usbDevice::kDoControlStuff, kDevice, pair(2, 0), 3),
        wait(us(900), us(1300)),
        sel(2, usbDevice::kDoControlStuff, kDevice, pair(2, 1), pair(-12800, 0)),
        wait(us(900), us(1300)),
        sel(2, usbDevice::kDoControlStuff, kDevice, pair(2, 2), pair(-12800, 0)),
    end(usbDevice::kDoControlStuff, kDevice, kEngine, 3, kSuccess),
};

constexpr Step kSetUpEngine[] = {
    start(usbEngine::kInitHardware, kEngine, kDevice, kDevice, 2),
        start(usbStream::kInitWithAudioEngine, kOutput, kEngine, 1, true),
            sel(0, usbStream::kInitWithAudioEngine, kOutput, 1, pair(2, 16)),
            sel(0, usbStream::kInitWithAudioEngine, kOutput, 2, pair(2, 24)),
        end(usbStream::kInitWithAudioEngine, kOutput, 2, 0, true),
        sel(0, usbEngine::kInitHardware, kEngine, true, kOutput, 1),
        start(usbStream::kInitWithAudioEngine, kInput, kEngine, 2, false),
            sel(0, usbStream::kInitWithAudioEngine, kInput, 1, pair(1, 16)),
        end(usbStream::kInitWithAudioEngine, kInput, 1, 0, true),
        sel(0, usbEngine::kInitHardware, kEngine, false, kInput, 2),
        tell(kSetUpControls),
        sel(1, usbEngine::kInitHardware, kEngine, kServerRate, kBufferBytes / 4),
    end(usbEngine::kInitHardware, kEngine, 2, 0, true),
};

constexpr Step kPlugIn[] = {
    start(plexoDevice::kStart, kDevice, kUsbDevice),
        start(usbDevice::kProtectedInitHardware, kDevice, kUsbDevice, 0),
            sel(0, usbDevice::kProtectedInitHardware, kDevice, pair(0x2f51, 0x0107), pair(0x0110, 1)),
            start(usbControl::kDetectSplitTransactions, kControlInterface, kUsbDevice, 1),
                other(usbControl::kDetectSplitTransactions, kControlInterface, kHub, 1, 2),
            end(usbControl::kDetectSplitTransactions, kControlInterface, true),
            wait(ms(2), ms(4)),
            sel(1, usbDevice::kProtectedInitHardware, kDevice, kControlInterface, pair(0x0100, 2)),
            start(usbDevice::kCheckForStatusInterruptEndpoint, kDevice, kControlInterface, 1),
                sel(0, usbDevice::kCheckForStatusInterruptEndpoint, kDevice, pair(0x83, 2), 16),
            end(usbDevice::kCheckForStatusInterruptEndpoint, kDevice, kStatusPipe, kSuccess),
            sel(2, usbDevice::kProtectedInitHardware, kDevice, kEngine, pair(1, 2)),
            start(plexoEngine::kStart, kEngine, kDevice, kDevice),
                tell(kSetUpEngine),
            end(plexoEngine::kStart, kEngine, kDevice, kDevice, true),
            start(usbDevice::kGetAnchorFrameAndTimeStamp, kDevice, kTimeLock, false),
                wait(us(10), us(20)),
            end(usbDevice::kGetAnchorFrameAndTimeStamp, kDevice, nowMilliseconds(), nowNanoseconds(), kSuccess),
        end(usbDevice::kProtectedInitHardware, kDevice, 1, kAwake, true),
    end(plexoDevice::kStart, kDevice, kUsbDevice, true),
};

constexpr Step kPrepare[] = {
    start(usbStream::kPrepareUSBStream, kOutput, kOutputInterface, 1, kServerRate),
        start(usbControl::kSetAlternateInterface, kControlInterface, 1, 0, 1),
            wait(ms(1), ms(2)),
        end(usbControl::kSetAlternateInterface, kControlInterface, 1, 1, kSuccess),
        start(usbStream::kConfigureAudioStream, kOutput, 1, 1, kServerRate),
            sel(0, usbStream::kConfigureAudioStream, kOutput, pair(0x01, 0x09), pair(200, 1)),
            start(usbControl::kNewAlternateInterface, kHostPipe, kOutputInterface, 1, 0x01),
            end(usbControl::kNewAlternateInterface, kHostPipe, kHostPipe, 200, kSuccess),
        end(usbStream::kConfigureAudioStream, kOutput, kPipe, 0, kSuccess),
        sel(0, usbStream::kPrepareUSBStream, kOutput, 0x01, kServerRate),
        start(usbStream::kUpdateUSBFrameListInfo, kOutput, kServerRate, 1, 200),
        end(usbStream::kUpdateUSBFrameListInfo, kOutput, pair(kLists, kFramesPerList), pair(kListsInFlight, 1600)),
        sel(1, usbStream::kPrepareUSBStream, kOutput, kSampleBuffer, kBufferBytes),
        start(usbStream::kUpdateSampleOffsetAndLatency, kOutput, kServerRate, kFramesPerList, 0),
            other(usbStream::kUpdateSampleOffsetAndLatency, kOutput, 1, 0),
        end(usbStream::kUpdateSampleOffsetAndLatency, kOutput, 432, 48),
    end(usbStream::kPrepareUSBStream, kOutput, kPipe, 10, kSuccess),
};

constexpr Step kStartStream[] = {
    set(list, 0), set(offset, 0), set(bytesSent, 0), set(stamps, 0),
    start(usbStream::kStartUSBStream, kOutput, 0, false, false),
        set(frame, nowMilliseconds()),
        start(usbStream::kDoStartUSBStream, kOutput, var(frame), pair(10, true), false),
            add(frame, 10),
            start(usbStream::kQueueOutputFrames, kOutput, var(frame, -10), var(frame), 10),
                sel(0, usbStream::kQueueOutputFrames, kOutput, 0, 0 * kBytesPerList),
                sel(0, usbStream::kQueueOutputFrames, kOutput, 1, 1 * kBytesPerList),
                sel(0, usbStream::kQueueOutputFrames, kOutput, 2, 2 * kBytesPerList),
                sel(0, usbStream::kQueueOutputFrames, kOutput, 3, 3 * kBytesPerList),
            end(usbStream::kQueueOutputFrames, kOutput, kFrameToQueue, var(frame), kSuccess),
            other(usbStream::kCopyAnchor, kOutput, nowMilliseconds(), nowNanoseconds()),
            sel(0, usbStream::kDoStartUSBStream, kOutput, var(frame), nowNanoseconds()),
        end(usbStream::kDoStartUSBStream, kOutput, kFrameToQueue, true, kSuccess),
    end(usbStream::kStartUSBStream, kOutput, true, true, kSuccess),
};

constexpr Step kStartPlaying[] = {
    start(plexoEngine::kStartClient, kEngine, kUserClient),
        start(plexoEngine::kStartAudioEngine, kEngine, stopped),
            start(usbEngine::kPerformAudioEngineStart, kEngine, kStreams, kServerRate, stopped),
                sel(0, usbEngine::kPerformAudioEngineStart, kEngine, true, kOutput),
                mark(began),
                tell(kPrepare),
                tell(kStartStream),
            end(usbEngine::kPerformAudioEngineStart, kEngine, 1, kSuccess),
            start(plexoEngine::kSetState, kEngine, 0, stopped, runs),
            end(plexoEngine::kSetState, kEngine, 0, runs, stopped),
        end(plexoEngine::kStartAudioEngine, kEngine, runs, kSuccess),
    end(plexoEngine::kStartClient, kEngine, kUserClient, kSuccess),
};

// A frame list has gone out; the next free one takes its place at the end of the queue.
constexpr Step kList[] = {
    start(usbStream::kProcessWrite, kOutput, var(list), kSuccess, var(frame)),
        add(bytesSent, kBytesPerList), add(offset, kBytesPerList, kBufferBytes),
        sel(1, usbStream::kProcessWrite, kOutput, kFramesPerList, var(bytesSent)),
        start(usbStream::kWriteFrameList, kOutput, var(list), kFrameToQueue, kCurrentFrame),
            start(usbStream::kPrepareWriteFrameList, kOutput, var(list), var(offset), 0x300000),
                wait(us(8), us(20)),
            end(usbStream::kPrepareWriteFrameList, kOutput, kBytesPerList, var(offset), kSuccess),
            start(usbControl::kWriteForPipe, kHostPipe, kHostPipe, kFrameToQueue,
                  pair(kFramesPerList, kBytesPerList)),
                other(usbControl::kWriteForPipe, kHostPipe, kFrameToQueue, kCurrentFrame,
                      (kListsInFlight - 1) * kFramesPerList),
            end(usbControl::kWriteForPipe, kHostPipe, kHostPipe, kBytesPerList, kSuccess),
            add(frame, kFramesPerList), add(list, 1, kLists),
        end(usbStream::kWriteFrameList, kOutput, kFrameToQueue, kBytesPerList, kSuccess),
    end(usbStream::kProcessWrite, kOutput, var(bytesSent), var(list), kSuccess),
    other(usbStream::kRearmWatchdog, kOutput, kWatchdog, nanoseconds(ms(64)), kFrameToQueue),
};

// Times in nanoseconds: how far from the expected one, on the average, and how much they scatter.
constexpr Step kSmallJitter[] = {
    other(usbStream::kJitterFilter, kOutput, var(stampTime), pair(between(200, 9'000), between(2'000, 3'500)),
          pair(between(3'000, 11'000), 0x100)),
};
constexpr Step kHighJitter[] = {
    other(usbStream::kJitterFilter, kOutput, var(stampTime), pair(between(30'000, 90'000), between(5'000, 9'000)),
          pair(between(40'000, 95'000), 0x102)),
};
constexpr Step kJitter[] = {
    oneOf(kSmallJitter, kSmallJitter, kSmallJitter, kHighJitter),
};

// The sample buffer begins again: a time stamp.
constexpr Step kTimeStamp[] = {
    add(stamps, 1), set(stampTime, nowNanoseconds()),
    start(usbStream::kGenerateTimeStamp, kOutput, 0, 0, kBytesPerList),
        other(usbStream::kGenerateTimeStamp, kOutput, var(frame), var(stampTime)),
        start(usbStream::kJitterFilter, kOutput, var(stampTime), var(stamps)),
            oneOf(kSmallJitter, kSmallJitter, kJitter),
        end(usbStream::kJitterFilter, kOutput, var(stampTime)),
        start(usbStream::kTakeTimeStamp, kOutput, true, var(stampTime)),
        end(usbStream::kTakeTimeStamp, kOutput, var(stampTime), var(stamps)),
    end(usbStream::kGenerateTimeStamp, kOutput, var(stampTime)),
};
constexpr Step kBuffer[] = {
    every(ms(kFramesPerList), kListsPerBuffer, kList),
    tell(kTimeStamp),
};

// The device is gone: what was in flight comes back without having been sent.
constexpr Step kLostList[] = {
    start(usbStream::kProcessWrite, kOutput, var(list), kNotResponding, var(frame)),
        sel(2, usbStream::kProcessWrite, kOutput, pair(0, 0), kBytesPerList),
        start(usbStream::kWriteFrameList, kOutput, var(list), kFrameToQueue, kCurrentFrame),
            sel(1, usbStream::kWriteFrameList, kOutput, kNotResponding, var(list)),
        end(usbStream::kWriteFrameList, kOutput, kFrameToQueue, 0, kNotResponding),
        add(list, 1, kLists), add(frame, kFramesPerList),
    end(usbStream::kProcessWrite, kOutput, var(bytesSent), var(list), kNotResponding),
};
constexpr Step kStream[] = {
    wait(ms(10 + kFramesPerList), ms(10 + kFramesPerList)),
    everyWhile(ms(kListsPerBuffer * kFramesPerList), streaming, kBuffer),
    every(us(40), kListsInFlight, kLostList),
};

constexpr Step kCycleTime[] = {
    add(updates, 1),
    start(usbDevice::kDoTimerAction, kDevice, kUpdateTimer, kAwake, false),
        start(usbDevice::kUpdateUSBCycleTime, kDevice, 1'000'000'000, var(updates)),
            sel(0, usbDevice::kUpdateUSBCycleTime, kDevice, nowMilliseconds(), nowNanoseconds()),
            sel(1, usbDevice::kUpdateUSBCycleTime, kDevice, nowNanoseconds(), between(999'998'900, 1'000'001'100)),
        end(usbDevice::kUpdateUSBCycleTime, kDevice, 1'000'000'000, between(0, 40), kSuccess),
    end(usbDevice::kDoTimerAction, kDevice, kUpdateTimer, nanoseconds(ms(1000))),
};
constexpr Step kTimer[] = {
    everyWhile(ms(1000), plugged, kCycleTime),
};

constexpr Step kIo[] = {
    start(server::kIoThread, 412, kServerRate),
        tell(kServerAnchor),
        everyWhile(kCyclePeriod, serverRunning, kServerCycle),
    end(server::kIoThread),
};

constexpr Step kVolumeWheel[] = {
    start(usbDevice::kHandleStatusInterrupt, kDevice, kSuccess, 2, kStatusPipe),
        sel(0, usbDevice::kHandleStatusInterrupt, kDevice, pair(0, 0), pair(0x0200, 0)),
        sel(1, usbDevice::kHandleStatusInterrupt, kDevice, kEngine, pair(2, 0)),
    end(usbDevice::kHandleStatusInterrupt, kDevice, kStatusPipe, kSuccess),
};

constexpr Step kStopStream[] = {
    start(usbEngine::kPerformAudioEngineStop, kEngine, 1, paused, true),
        other(usbEngine::kPerformAudioEngineStop, kEngine, kOutput, var(stamps)),
        start(usbStream::kStopUSBStream, kOutput, 1, 0, false),
            sel(0, usbStream::kStopUSBStream, kOutput, var(began), now()),
            sel(1, usbStream::kStopUSBStream, kOutput, kPipe, kNotResponding),
        end(usbStream::kStopUSBStream, kOutput, false, false, pair(false, kSuccess)),
    end(usbEngine::kPerformAudioEngineStop, kEngine, 0, kSuccess),
};

constexpr Step kUnplug[] = {
    start(usbDevice::kWillTerminate, kDevice, kUsbDevice, kRequestTerminate, kAwake),
        other(usbDevice::kWillTerminate, kDevice, kEngine, 0, runs),
        start(usbStream::kWillTerminate, kOutput, kOutputInterface, kRequestTerminate, true),
        end(usbStream::kWillTerminate, kOutput, kOutputInterface, true),
        start(usbEngine::kWillTerminate, kEngine, kDevice, kRequestTerminate, runs),
            start(plexoEngine::kSetState, kEngine, 0, runs, paused),
            end(plexoEngine::kSetState, kEngine, 0, paused, runs),
        end(usbEngine::kWillTerminate, kEngine, kDevice, true),
    end(usbDevice::kWillTerminate, kDevice, kUsbDevice, 1, true),
    tell(kStopStream),
    start(usbStream::kStop, kOutput, kEngine, false, false),
        start(usbStream::kProtectedCloseInterface, kOutput, kOutputInterface, 0, true),
            sel(0, usbStream::kProtectedCloseInterface, kOutput, kPipe, kNotResponding),
        end(usbStream::kProtectedCloseInterface, kOutput, 0, 0, kSuccess),
    end(usbStream::kStop, kOutput, 0, true),
    start(usbEngine::kStop, kEngine, kDevice, 0, paused),
        other(usbEngine::kStop, kEngine, kOutput, 0),
        other(usbEngine::kStop, kEngine, kInput, 1),
    end(usbEngine::kStop, kEngine, kDevice, 0),
    start(usbDevice::kStop, kDevice, kUsbDevice, kAwake, 0),
        sel(0, usbDevice::kStop, kDevice, kUpdateTimer, kWorkLoop),
        sel(1, usbDevice::kStop, kDevice, kEngine, 0),
        start(usbDevice::kCloseControlInterface, kDevice, kControlInterface, kStatusPipe, true),
            sel(0, usbDevice::kCloseControlInterface, kDevice, kStatusPipe, kNotResponding),
        end(usbDevice::kCloseControlInterface, kDevice, 0, 0),
    end(usbDevice::kStop, kDevice, 0, 0),
    start(usbStream::kFree, kOutput, kSampleBuffer, kFrameLists, 0), end(usbStream::kFree, kOutput),
    start(usbStream::kFree, kInput, 0, 0, 0), end(usbStream::kFree, kInput),
    start(usbEngine::kFree, kEngine, kStreams, 0, 0), end(usbEngine::kFree, kEngine),
    start(usbDevice::kFree, kDevice, 0, kEngines, kTimeLock), end(usbDevice::kFree, kDevice),
};

constexpr Step kPlay[] = {
    tell(kStartPlaying),
    set(streaming, 1), set(serverRunning, 1),
    fork(completion, kStream), fork(ioThread, kIo),
};

constexpr Step kPlot[] = {
    wait(ms(250), ms(400)),
    set(plugged, 1),
    tell(kPlugIn),
    fork(timer, kTimer),
    wait(ms(120), ms(180)),
    fork(client, kPlay),
    wait(ms(1800), ms(2400)),
    tell(kVolumeWheel),
    wait(ms(80), ms(140)),
    tell(kVolumeWheel),
    wait(ms(1300), ms(1900)),
    set(streaming, 0),
    join(completion),
    wait(ms(1), ms(3)),
    set(serverRunning, 0), set(plugged, 0),
    tell(kUnplug),
    wait(ms(600), ms(900)),
};

}  // namespace

constexpr Story kUsb = story(kThreads, kPlot);

}  // namespace sonaprobe::sim
