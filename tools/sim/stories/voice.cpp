// The voice trigger: the always-on processor listens while all else is off, hears its phrase and
// wakes the device, whose codec and microphones take over for as long as somebody speaks.

#include "sim/stories/codes.h"
#include "sim/stories/stories.h"

namespace sonaprobe::sim {
namespace {

enum Role : uint8_t { wakeUp, processor, reader, dma };
constexpr Thread kThreads[] = {{0x61, 0}, {0x5c, 1}, {0x1f30, 4}, {0x79, 2}};

enum Variable : uint8_t { listening, capturing, sample, readSample, captured, index, began };

constexpr Object kControl{0xffffff80'63108000};
constexpr Object kPlugIn{0xffffff80'63120400};
constexpr Object kAudio{0xffffff80'63140000};  // the embedded audio controller
constexpr Object kCodec{0xffffff80'6314c000};
constexpr Object kMicrophones{0xffffff80'63162000};
constexpr Object kDecimator{0xffffff80'6316b400};

constexpr uint64_t kRate = 16000;
constexpr uint64_t kBlockFrames = 640;  // 40 ms
constexpr uint64_t kReadFrames = 320;   // 20 ms
constexpr uint64_t kRingBlocks = 25;   // one second
constexpr uint64_t kMicrophoneMask = 0x3;
constexpr uint64_t kInputFlag = 0x2;
constexpr uint64_t kPowerRef = 0x8c41;
constexpr uint64_t kDmaBuffers = 4;
enum PowerStage : uint64_t { off, slowOff, fastOn, on };

// The processor hands over a block every 40 ms, with its own clock's count of them.
constexpr Step kBlock[] = {
    add(sample, kBlockFrames),
    other(voiceTrigger::kMCACallback, kControl, beat(), var(sample), kBlockFrames),
};
constexpr Step kRing[] = {
    every(ms(40), kRingBlocks, kBlock),
    other(voiceTrigger::kUpdateZeroTSWrap, kControl, var(sample), now(), between(0, 15)),
};
constexpr Step kListen[] = {
    everyWhile(ms(40 * kRingBlocks), listening, kRing),
};

constexpr Step kSwitchMicrophones[] = {
    start(z58::kConfigureSwitches, kCodec, true, true, chars("dmic")),
        sel(0, z58::kConfigureSwitches, kCodec, 0x05, 0x00),
        start(z58::kSetDMicBclkSwitch, kCodec, true, false, 2'400'000),
            sel(0, z58::kSetDMicBclkSwitch, kCodec, 1'250),
        end(z58::kSetDMicBclkSwitch, kCodec, false, kSuccess),
        start(z58::kSetDMicDataSwitch, kCodec, true, false, kMicrophoneMask),
        end(z58::kSetDMicDataSwitch, kCodec, false, kSuccess),
    end(z58::kConfigureSwitches, kCodec, 0x00, kSuccess),
};

constexpr Step kPowerOnCodec[] = {
    start(z58::kEnableAudioHW, kCodec, false, 0, kInputFlag),
        mark(began),
        start(z58::kPowerOnCodec, kCodec, false, true, 1),
            wait(us(900), us(1100)),
            sel(0, z58::kPowerOnCodec, kCodec, since(began)),
            start(z58::kPing, kCodec, 0x5842, 3),
                wait(us(220), us(300)),
            end(z58::kPing, kCodec, 0x5842, 0xb1, kSuccess),
            sel(1, z58::kPowerOnCodec, kCodec, 118, 9),
        end(z58::kPowerOnCodec, kCodec, true, since(began), kSuccess),
    end(z58::kEnableAudioHW, kCodec, true, 1, kSuccess),
};

constexpr Step kStageOn[] = {
    start(embeddedAudio::kPowerNotification, kAudio, off, kPowerRef),
        start(embeddedAudio::kChangePowerStage, kAudio, off, kPowerRef),
            sel(3, embeddedAudio::kChangePowerStage, kAudio, off, on),
            sel(0, embeddedAudio::kChangePowerStage, kAudio, fastOn, on),
            start(embeddedAudio::kSetPowerStageDesiredFastOn, kAudio, off, kPowerRef),
                sel(1, embeddedAudio::kSetPowerStageDesiredFastOn, kAudio, false),
                tell(kPowerOnCodec),
            end(embeddedAudio::kSetPowerStageDesiredFastOn, kAudio, fastOn, since(began), kSuccess),
            start(embeddedAudio::kSetPowerStageOn, kAudio, fastOn, kPowerRef),
                sel(1, embeddedAudio::kSetPowerStageOn, kAudio, kInputFlag),
                other(embeddedAudio::kRegisterWrite, kAudio, 0x1101, 'C', 0x96),
                other(embeddedAudio::kRegisterRead, kAudio, 0x1101, 'C', 0x96),
            end(embeddedAudio::kSetPowerStageOn, kAudio, on, true, kSuccess),
        end(embeddedAudio::kChangePowerStage, kAudio, on, since(began), kSuccess),
    end(embeddedAudio::kPowerNotification, kAudio, on, kPowerRef, kSuccess),
};

constexpr Step kStartMicrophones[] = {
    mark(began),
    start(microphone::kPowerOnHardware, kMicrophones, 0, 0),
        wait(us(90), us(140)),
        sel(0, microphone::kPowerOnHardware, kMicrophones, between(95'000, 140'000), 1),
    end(microphone::kPowerOnHardware, kMicrophones, 1, kSuccess),
    start(microphone::kStartAudio, kMicrophones, pair(kRate, 2), kMicrophoneMask, 0),
        sel(0, microphone::kStartAudio, kMicrophones, 0x1),
        start(microphone::kEnableClocks, kMicrophones, true, 0x3, 1),
            sel(1, microphone::kEnableClocks, kMicrophones, 0x1),
        end(microphone::kEnableClocks, kMicrophones, 0x3, 2'400'000, kSuccess),
        start(microphone::kConfigureFormat, kDecimator, pair(kRate, 16), pair(2, 150)),
        end(microphone::kConfigureFormat, kDecimator, 0x31, 19, kSuccess),
        start(microphone::kSetFIFO, kMicrophones, 32, 128, 4),
            other(microphone::kWriteReg, kMicrophones, 0x48, 0x20),
        end(microphone::kSetFIFO, kMicrophones, 0x20, 32, kSuccess),
        start(microphone::kEnableDecimators, kMicrophones, true, 0x1, 0),
            sel(0, microphone::kEnableDecimators, kMicrophones, 0, 48),
        end(microphone::kEnableDecimators, kMicrophones, 0x1, kSuccess),
        sel(1, microphone::kStartAudio, kMicrophones, kBlockFrames * 4, kDmaBuffers),
    end(microphone::kStartAudio, kMicrophones, 1, since(began), kSuccess),
};

constexpr Step kOpenInput[] = {
    start(embeddedAudio::kSetAudioEnabledWithFlags, kAudio, kInputFlag, 0, off),
        tell(kStageOn),
        start(z58::kEnableAudioInput, kCodec, true, chars("dmic"), kRate),
            start(z58::kSetupAudioInput, kCodec, chars("dmic"), 2, 16),
                sel(0, z58::kSetupAudioInput, kCodec, 0, 0),
                sel(0, z58::kSetupAudioInput, kCodec, 1, 1),
            end(z58::kSetupAudioInput, kCodec, 0, 0x3, kSuccess),
            tell(kSwitchMicrophones),
            sel(1, z58::kEnableAudioInput, kCodec, nanoseconds(ms(12)), kMicrophoneMask),
        end(z58::kEnableAudioInput, kCodec, true, kMicrophoneMask, kSuccess),
        tell(kStartMicrophones),
    end(embeddedAudio::kSetAudioEnabledWithFlags, kAudio, kInputFlag, on, kSuccess),
};

constexpr Step kUnmute[] = {
    start(z58::kEnableInputMute, kCodec, false, true, kMicrophoneMask),
    end(z58::kEnableInputMute, kCodec, false, 0x00, kSuccess),
};

constexpr Step kDmaBlock[] = {
    start(microphone::kDmaCompleteAction, kMicrophones, pair(0x1, kBlockFrames * 4), var(index), nowNanoseconds()),
        add(index, 1, kDmaBuffers), add(captured, kBlockFrames),
    end(microphone::kDmaCompleteAction, kMicrophones, var(index), kBlockFrames * 4, kSuccess),
};
constexpr Step kCapture[] = {
    wait(ms(40), ms(40)),
    everyWhile(ms(40), capturing, kDmaBlock),
};
constexpr Step kReadBlock[] = {
    other(voiceTrigger::kMCAReadInputData, kPlugIn, kReadFrames, var(readSample)),
    add(readSample, kReadFrames),
};
constexpr Step kRead[] = {
    everyWhile(ms(20), capturing, kReadBlock),
};

constexpr Step kCloseInput[] = {
    start(embeddedAudio::kSetAudioDisabledWithFlags, kAudio, kInputFlag, kInputFlag, 0),
        start(microphone::kStopAudio, kMicrophones, 1, true, kMicrophoneMask),
            sel(0, microphone::kStopAudio, kMicrophones, 17),
            start(microphone::kEnableDecimators, kMicrophones, false, 0x1, 0x1),
            end(microphone::kEnableDecimators, kMicrophones, 0, kSuccess),
        end(microphone::kStopAudio, kMicrophones, 0, var(captured), kSuccess),
        start(z58::kEnableAudioInput, kCodec, false, chars("dmic"), kRate),
            sel(0, z58::kEnableAudioInput, kCodec, kMicrophoneMask),
            start(z58::kSetDMicDataSwitch, kCodec, false, true, kMicrophoneMask),
            end(z58::kSetDMicDataSwitch, kCodec, true, kSuccess),
            start(z58::kSetDMicBclkSwitch, kCodec, false, true, 2'400'000),
            end(z58::kSetDMicBclkSwitch, kCodec, true, kSuccess),
        end(z58::kEnableAudioInput, kCodec, false, 0, kSuccess),
        sel(2, embeddedAudio::kSetAudioDisabledWithFlags, kAudio, slowOff),
        start(embeddedAudio::kSetPowerStageDesiredSlowOff, kAudio, on, kPowerRef),
            sel(1, embeddedAudio::kSetPowerStageDesiredSlowOff, kAudio, nanoseconds(ms(300))),
        end(embeddedAudio::kSetPowerStageDesiredSlowOff, kAudio, slowOff, true, kSuccess),
    end(embeddedAudio::kSetAudioDisabledWithFlags, kAudio, 0, slowOff, kSuccess),
};

constexpr Step kPowerOff[] = {
    start(embeddedAudio::kSetPowerStageStartedSlowOff, kAudio, slowOff, kPowerRef),
        mark(began),
        sel(1, embeddedAudio::kSetPowerStageStartedSlowOff, kAudio, nanoseconds(ms(2))),
        wait(ms(2), ms(3)),
    end(embeddedAudio::kSetPowerStageStartedSlowOff, kAudio, slowOff, since(began), kSuccess),
    start(embeddedAudio::kSetPowerStagePSOff, kAudio, slowOff, kPowerRef),
        start(z58::kDisableAudioHW, kCodec, 1, false, false),
            start(z58::kRequestCodecPowerOff, kCodec, true, 0, 0),
            end(z58::kRequestCodecPowerOff, kCodec, false, kSuccess),
            start(z58::kPowerOffCodec, kCodec, true, false, 0),
                sel(0, z58::kPowerOffCodec, kCodec, 0x21),
            end(z58::kPowerOffCodec, kCodec, false, since(began), kSuccess),
        end(z58::kDisableAudioHW, kCodec, 0, kSuccess),
    end(embeddedAudio::kSetPowerStagePSOff, kAudio, off, true, kSuccess),
};

constexpr Step kPlot[] = {
    wait(ms(250), ms(400)),
    set(listening, 1), set(sample, between(1'000'000, 9'000'000)),
    fork(processor, kListen),
    wait(ms(900), ms(1900)),
    other(voiceTrigger::kTriggerMsg, kControl, now(-static_cast<int64_t>(ms(60))), between(9'000, 14'000), true),
    wait(ms(3), ms(5)),
    tell(kOpenInput),
    set(capturing, 1), set(readSample, var(sample)),
    fork(dma, kCapture), fork(reader, kRead),
    wait(ms(12), ms(13)),
    tell(kUnmute),
    wait(ms(1500), ms(2600)),
    set(capturing, 0),
    join(reader), join(dma),
    tell(kCloseInput),
    wait(ms(300), ms(310)),
    tell(kPowerOff),
    wait(ms(500), ms(900)),
    set(listening, 0),
};

}  // namespace

constexpr Story kVoice = story(kThreads, kPlot);

}  // namespace sonaprobe::sim
