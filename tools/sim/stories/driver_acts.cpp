// The acts, driver by driver.

#include "sim/stories/driver_acts.h"

#include "sim/stories/codes.h"

namespace sonaprobe::sim {
namespace {

enum Variable : uint8_t { hold = kHold, began };

constexpr Object kController{0xffffff80'22d14000};
constexpr Object kHda{0xffffff80'22d5a800};
constexpr Object kHdaEngine{0xffffff80'22e08000};
constexpr Object kHdaStream{0xffffff80'22e0d600};
constexpr Object kHeadphonePin{0xffffff80'22d6c600};
constexpr Object kVolume{0xffffff80'22f30400};
constexpr Object kPimletDriver{0xffffff80'22f84000};
constexpr Object kFramebuffer{0xffffff80'40a4d800};
constexpr Object kUsbDevice{0xffffff80'31045000};
constexpr Object kDevice{0xffffff80'3146a000};
constexpr Object kControls{0xffffff80'31481200};
constexpr Object kStatusPipe{0xffffff80'31482a80};
constexpr Object kEngine{0xffffff80'314b8000};
constexpr Object kOutput{0xffffff80'314c2000};
constexpr Object kInput{0xffffff80'314c6000};
constexpr Object kPipe{0xffffff80'314d9000};
constexpr Object kAudio2{0xffffff80'35a11000};
constexpr Object kAudio{0xffffff80'63140000};
constexpr Object kCodec{0xffffff80'6314c000};
constexpr Object kMicrophones{0xffffff80'63162000};
constexpr Object kBus{0xffffff80'63181000};
constexpr Object kBuffer{0xffffff81'0a4c0000};

constexpr uint64_t kHeadphoneNode = 21;
constexpr uint64_t kRate = 48000;
constexpr uint64_t kActive = 2;
constexpr uint64_t kPowerRef = 0x8c41;
constexpr Value kSlow = var(hold);

// Gate holders.

constexpr Step kPinSense[] = {
    start(hdaDriver::kUpdateCachedPinSense, kHda, kHeadphoneNode, 0),
        start(hdaWidget::kPinSense, kHeadphonePin, kHeadphoneNode, pair(0x1001C, 0)),
            start(hdaController::kHandleCodecCommandAction, kController, 0x15F0900, kActive, false),
                start(hdaController::kPollRegister, kController, 0x5D, pair(1, 1), nanoseconds(ms(15))),
                    wait(kSlow),
                end(hdaController::kPollRegister, kController, 0x5D, pair(1, between(400, 940)), kSuccess),
            end(hdaController::kHandleCodecCommandAction, kController, between(2000, 9000), 0, kSuccess),
            sel(0, hdaWidget::kPinSense, kHeadphonePin, kHeadphoneNode, pair(0, kSuccess)),
        end(hdaWidget::kPinSense, kHeadphonePin, kHeadphoneNode, 0, kSuccess),
    end(hdaDriver::kUpdateCachedPinSense, kHda, kHeadphoneNode, 0, kSuccess),
};

constexpr Step kPimletPower[] = {
    mark(began),
    start(hdaDriver::kDispatchPowerStateToPimlet, kHda, kPimletDriver, kActive, kActive),
        start(pimlet::kSetPowerState, kPimletDriver, kActive, 1, 1),
            sel(1, pimlet::kSetPowerState, kPimletDriver),
            wait(kSlow),
            sel(2, pimlet::kSetPowerState, kPimletDriver),
        end(pimlet::kSetPowerState, kPimletDriver, kActive, false, kSuccess),
    end(hdaDriver::kDispatchPowerStateToPimlet, kHda, kActive, since(began), kSuccess),
};

constexpr Step kControlTransfers[] = {
    start(usbDevice::kDoControlStuff, kDevice, kEngine, 1, 1),
        sel(0, usbDevice::kDoControlStuff, kDevice, pair(3, 0x0302), pair(2, 2)),
        start(usbControl::kSetAlternateInterface, kControls, 1, 0, 1),
            other(usbControl::kSetAlternateInterface, kControls, 2, 1),
            wait(kSlow),
        end(usbControl::kSetAlternateInterface, kControls, 1, 1, kSuccess),
        sel(1, usbDevice::kDoControlStuff, kDevice, pair(2, 0), 3),
        sel(2, usbDevice::kDoControlStuff, kDevice, pair(2, 1), pair(-12800, 0)),
    end(usbDevice::kDoControlStuff, kDevice, kEngine, 3, kSuccess),
};

constexpr Step kCodecPower[] = {
    mark(began),
    start(embeddedAudio::kChangePowerStage, kAudio, 0, kPowerRef, 3),
        sel(0, embeddedAudio::kChangePowerStage, kAudio, 2, 3),
        start(embeddedAudio::kSetPowerStageDesiredFastOn, kAudio, 0, kPowerRef, false),
            start(z58::kPowerOnCodec, kCodec, false, true, 1),
                wait(kSlow),
                sel(0, z58::kPowerOnCodec, kCodec, since(began)),
                sel(1, z58::kPowerOnCodec, kCodec, 118, 9),
            end(z58::kPowerOnCodec, kCodec, true, since(began), kSuccess),
        end(embeddedAudio::kSetPowerStageDesiredFastOn, kAudio, 2, since(began), kSuccess),
    end(embeddedAudio::kChangePowerStage, kAudio, 3, since(began), kSuccess),
};

constexpr Step kBulkData[] = {
    start(pimletBus::kV11SendDownlinkBufferData, kBus, kBuffer, 512, 480),
        sel(0, pimletBus::kV11SendDownlinkBufferData, kBus, 480, 32),
        wait(kSlow),
    end(pimletBus::kV11SendDownlinkBufferData, kBus, 480, 0x1e0, kSuccess),
};

constexpr Step kDisplay[] = {
    start(hdaController::kFramebufferEventHandler, kController, kFramebuffer, chars("hdpn"), 1),
        sel(1, hdaController::kFramebufferEventHandler, kController, 0, 2),
        start(hdaController::kDisplayIsReady, kController, pair(3, 0), 1, kActive),
            wait(kSlow),
        end(hdaController::kDisplayIsReady, kController, 0, true, 1),
    end(hdaController::kFramebufferEventHandler, kController, chars("hdpn"), 1, kSuccess),
};

// The same, and in the end the transfer fails.
constexpr Step kFailingTransfers[] = {
    start(usbDevice::kDoControlStuff, kDevice, kEngine, 1, 1),
        start(usbControl::kSetAlternateInterface, kControls, 1, 0, 1),
            wait(kSlow),
        end(usbControl::kSetAlternateInterface, kControls, 1, 0, kTimeout),
        sel(4, usbDevice::kDoControlStuff, kDevice, pair(2, 1), kTimeout),
    end(usbDevice::kDoControlStuff, kDevice, kEngine, 0, kTimeout),
};

constexpr DriverAct kGateHolders[] = {
    {kPinSense, hdaController::kPollRegister},
    {kPimletPower, pimlet::kSetPowerState},
    {kControlTransfers, usbControl::kSetAlternateInterface},
    {kCodecPower, z58::kPowerOnCodec},
    {kBulkData, pimletBus::kV11SendDownlinkBufferData},
    {kDisplay, hdaController::kDisplayIsReady},
    {kFailingTransfers, usbControl::kSetAlternateInterface},
};

// Engine changes.

constexpr Step kPauseAudio2[] = {
    start(usbAudio2::kPauseAudioEngine, kAudio2, true, between(100'000, 900'000)),
        wait(kSlow),
    end(usbAudio2::kPauseAudioEngine, kAudio2, true, 2, kSuccess),
};

constexpr Step kStopAudio2[] = {
    start(usbAudio2::kStopAudioEngine, kAudio2, true, 1, between(100'000, 900'000)),
        other(usbAudio2::kStopAudioEngine, kAudio2, 4),
        wait(kSlow),
    end(usbAudio2::kStopAudioEngine, kAudio2, between(100'000, 900'000), false, kSuccess),
};

constexpr Step kForcedPause[] = {
    start(hdaEngine::kControllerForcedPause, kHdaEngine, 1, true, true),
        sel(0, hdaEngine::kControllerForcedPause, kHdaEngine, between(0, 131071), 48000),
        wait(kSlow),
    end(hdaEngine::kControllerForcedPause, kHdaEngine, 2, kSuccess),
};

constexpr Step kStopHda[] = {
    mark(began),
    start(hdaEngine::kPerformAudioEngineStop, kHdaEngine, true),
        start(hdaEngine::kStopDMAEngine, kHdaEngine, kHdaStream, 0x14001E, between(0, 131071)),
            wait(kSlow),
        end(hdaEngine::kStopDMAEngine, kHdaEngine, kHdaStream, since(began), kSuccess),
    end(hdaEngine::kPerformAudioEngineStop, kHdaEngine, false, kSuccess),
};

constexpr Step kChangeFormat[] = {
    start(usbDevice::kFormatChangeController, kDevice, kEngine, kOutput, pair(kRate, 44100)),
        sel(0, usbDevice::kFormatChangeController, kDevice, kEngine, 1),
        start(usbEngine::kControlledFormatChange, kEngine, kOutput, pair(kRate, 44100), 1),
            start(usbStream::kControlledFormatChange, kOutput, pair(2, 24), pair(kRate, 44100), true),
                wait(kSlow),
            end(usbStream::kControlledFormatChange, kOutput, 1, 44100, kSuccess),
        end(usbEngine::kControlledFormatChange, kEngine, kOutput, 44100, kSuccess),
        sel(2, usbDevice::kFormatChangeController, kDevice, kEngine, 2),
    end(usbDevice::kFormatChangeController, kDevice, kEngine, 44100, kSuccess),
};

constexpr Step kUnplug[] = {
    start(usbDevice::kWillTerminate, kDevice, kUsbDevice, 0x100000, kActive),
        other(usbDevice::kWillTerminate, kDevice, kEngine, 0, 1),
        start(usbEngine::kWillTerminate, kEngine, kDevice, 0x100000, 1),
            start(plexoEngine::kSetState, kEngine, 0, 1, 2),
                wait(kSlow),
            end(plexoEngine::kSetState, kEngine, 0, 2, 1),
        end(usbEngine::kWillTerminate, kEngine, kDevice, true),
    end(usbDevice::kWillTerminate, kDevice, kUsbDevice, 1, true),
};

constexpr DriverAct kEngineChanges[] = {
    {kPauseAudio2, usbAudio2::kPauseAudioEngine},
    {kStopAudio2, usbAudio2::kStopAudioEngine},
    {kForcedPause, hdaEngine::kControllerForcedPause},
    {kStopHda, hdaEngine::kPerformAudioEngineStop},
    {kChangeFormat, usbDevice::kFormatChangeController},
    {kUnplug, usbDevice::kWillTerminate},
};

// Short work.

constexpr Step kVerb[] = {
    start(hdaController::kHandleCodecCommandAction, kController, 0x0270500, kActive, false),
        sel(0, hdaController::kHandleCodecCommandAction, kController, between(2000, 9000), pair(0x1f, 0x1e)),
        wait(us(30), us(60)),
    end(hdaController::kHandleCodecCommandAction, kController, between(2000, 9000), 0, kSuccess),
};

constexpr Step kPeriodicTasks[] = {
    start(hdaController::kProtectedRunPeriodicTasks, kController, kActive, 1, 0),
    end(hdaController::kProtectedRunPeriodicTasks, kController, false, nanoseconds(ms(1000))),
    start(hdaDriver::kProtectedRunPeriodicTasks, kHda, kActive, 1, 0),
        sel(0, plexoEngine::kGetState, kHdaEngine, 0, 1),
    end(hdaDriver::kProtectedRunPeriodicTasks, kHda, kActive, nanoseconds(ms(1000))),
};

constexpr Step kVolumeKey[] = {
    start(hdaEngine::kBroadcastVolume, kHdaEngine, chars("spkr"), 0, 51),
        sel(0, hdaEngine::kBroadcastVolume, kHdaEngine, kVolume, pair(48, 51)),
        wait(us(60), us(200)),
    end(hdaEngine::kBroadcastVolume, kHdaEngine, chars("spkr"), 1, kSuccess),
};

constexpr Step kFrameList[] = {
    start(usbStream::kProcessWrite, kOutput, between(0, 127), kSuccess, nowMilliseconds()),
        start(usbStream::kWriteFrameList, kOutput, between(0, 127), nowMilliseconds(), nowMilliseconds()),
            start(usbStream::kPrepareWriteFrameList, kOutput, between(0, 127), 1536, 0x300000),
                wait(us(8), us(20)),
            end(usbStream::kPrepareWriteFrameList, kOutput, 1536, 3072, kSuccess),
            start(usbControl::kWriteForPipe, kPipe, kPipe, nowMilliseconds(), pair(8, 1536)),
            end(usbControl::kWriteForPipe, kPipe, kPipe, 1536, kSuccess),
        end(usbStream::kWriteFrameList, kOutput, nowMilliseconds(), 1536, kSuccess),
    end(usbStream::kProcessWrite, kOutput, 1536, between(0, 127), kSuccess),
};

// A failure that has nothing to do with the sound.
constexpr Step kFailingPing[] = {
    start(z58::kPing, kCodec, 0x5842, 3),
        wait(us(220), us(900)),
    end(z58::kPing, kCodec, 0x5842, 0, kNotResponding),
};

constexpr Step kMicrophoneBlock[] = {
    start(microphone::kDmaCompleteAction, kMicrophones, pair(1, 2560), 2, nowNanoseconds()),
    end(microphone::kDmaCompleteAction, kMicrophones, 3, 2560, kSuccess),
};

constexpr Step kVolumeWheel[] = {
    start(usbDevice::kHandleStatusInterrupt, kDevice, kSuccess, 2, kStatusPipe),
        sel(0, usbDevice::kHandleStatusInterrupt, kDevice, pair(0, 0), pair(0x0200, 0)),
    end(usbDevice::kHandleStatusInterrupt, kDevice, kStatusPipe, kSuccess),
};

constexpr DriverAct kShortWork[] = {
    {kVerb, hdaController::kHandleCodecCommandAction},
    {kPeriodicTasks, hdaDriver::kProtectedRunPeriodicTasks},
    {kVolumeKey, hdaEngine::kBroadcastVolume},
    {kFrameList, usbStream::kPrepareWriteFrameList},
    {kFailingPing, z58::kPing},
    {kMicrophoneBlock, microphone::kDmaCompleteAction},
    {kVolumeWheel, usbDevice::kHandleStatusInterrupt},
};

// Interrupt work.

constexpr Step kCodecInterrupt[] = {
    start(z58::kCodecInterruptAction, kCodec, 0x40, 0xff, nanoseconds(us(30))),
        wait(us(60), us(180)),
        sel(2, z58::kCodecInterruptAction, kCodec, 0x40),
        wait(us(20), us(90)),
    end(z58::kCodecInterruptAction, kCodec, 0x40, 0xff),
};

constexpr Step kBusInterrupt[] = {
    start(pimletBus::kInterruptAction, kBus, pair(0x3, 0xf), 2),
        sel(0, pimletBus::kInterruptAction, kBus, between(16, 64), 0),
        wait(us(40), us(160)),
    end(pimletBus::kInterruptAction, kBus, pair(0x3, 0)),
};

constexpr Step kMicrophoneInterrupt[] = {
    start(microphone::kInterruptAction, kMicrophones, 1, pair(0x1, 0x3)),
        sel(0, microphone::kInterruptAction, kMicrophones, pair(0, 16), between(1, 90)),
        wait(us(60), us(210)),
    end(microphone::kInterruptAction, kMicrophones, pair(0x1, 0)),
};

constexpr DriverAct kInterruptWork[] = {
    {kCodecInterrupt, z58::kCodecInterruptAction},
    {kBusInterrupt, pimletBus::kInterruptAction},
    {kMicrophoneInterrupt, microphone::kInterruptAction},
};

// Calls on the I/O thread.

constexpr Step kConvertInput[] = {
    start(usbEngine::kConvertInputSamples, kEngine, kBuffer, 0, 512),
        start(usbStream::kCoalesceInputSamples, kInput, 1536, between(0, 127), 0),
            wait(kSlow),
        end(usbStream::kCoalesceInputSamples, kInput, 1536, 1536, kSuccess),
    end(usbEngine::kConvertInputSamples, kEngine, 1536, kSuccess),
};

constexpr Step kClipOutput[] = {
    start(usbEngine::kClipOutputSamples, kEngine, kOutput, 0, 512),
        start(usbStream::kWriteFrameList, kOutput, between(0, 127), nowMilliseconds(), nowMilliseconds()),
            start(usbStream::kPrepareWriteFrameList, kOutput, between(0, 127), 1536, 0x300000),
                wait(kSlow),
            end(usbStream::kPrepareWriteFrameList, kOutput, 1536, 3072, kSuccess),
        end(usbStream::kWriteFrameList, kOutput, nowMilliseconds(), 1536, kSuccess),
    end(usbEngine::kClipOutputSamples, kEngine, kOutput, 512, kSuccess),
};

constexpr Step kDoIO[] = {
    start(usbAudio2::kDoIO, kAudio2, between(0, 1 << 24), now(), pair(1, 512)),
        other(usbAudio2::kTakeTimeStamp, kAudio2, between(0, 1 << 24), now(), pair(1, 40)),
        wait(kSlow),
    end(usbAudio2::kDoIO, kAudio2, between(0, 1 << 24), 4096, kSuccess),
};

constexpr DriverAct kIoCalls[] = {
    {kConvertInput, usbStream::kCoalesceInputSamples},
    {kClipOutput, usbStream::kPrepareWriteFrameList},
    {kDoIO, usbAudio2::kDoIO},
};

// Never played: a table that is not sound does not compile.
constexpr Thread kAnyThread[] = {{0, 0}};
constexpr Step kEveryAct[] = {
    tell(kPinSense), tell(kPimletPower), tell(kControlTransfers), tell(kCodecPower), tell(kBulkData),
    tell(kDisplay), tell(kFailingTransfers), tell(kPauseAudio2), tell(kStopAudio2), tell(kForcedPause),
    tell(kStopHda), tell(kChangeFormat), tell(kUnplug), tell(kVerb), tell(kPeriodicTasks),
    tell(kVolumeKey), tell(kFrameList), tell(kFailingPing), tell(kMicrophoneBlock), tell(kVolumeWheel),
    tell(kCodecInterrupt), tell(kBusInterrupt), tell(kMicrophoneInterrupt), tell(kConvertInput),
    tell(kClipOutput), tell(kDoIO),
};
[[maybe_unused]] constexpr Story kChecked = story(kAnyThread, kEveryAct);

}  // namespace

std::span<const DriverAct> gateHolders() { return kGateHolders; }
std::span<const DriverAct> engineChanges() { return kEngineChanges; }
std::span<const DriverAct> shortWork() { return kShortWork; }
std::span<const DriverAct> interruptWork() { return kInterruptWork; }
std::span<const DriverAct> ioCalls() { return kIoCalls; }

}  // namespace sonaprobe::sim
