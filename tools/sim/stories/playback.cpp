// Built-in output: a client starts playing, the device powers up, I/O cycles run, one of them is
// overloaded, and in most rounds the drivers' own events say why; then the device goes idle.

#include "sim/stories/server.h"
#include "sim/stories/stories.h"

namespace sonaprobe::sim {
namespace {

enum Role : uint8_t { request, ioThread, periodic, interrupt, command, idleTimer };
constexpr Thread kThreads[] = {{0x1c3a, 2}, {0x1c52, 5}, {0x8d, 0}, {0x71, 1}, {0x9e, 3}, {0x93, 4}};

enum Variable : uint8_t {
    running = firstOwnVariable,
    began,
    wrapSample,
    generation,
    verb,
    widget,
    node,
    powerState,
    oldPowerState,
    stalled,
    stoppedAt,
};

constexpr Object kController{0xffffff80'22d14000};
constexpr Object kDriver{0xffffff80'22d5a800};
constexpr Object kCodec{0xffffff80'22d61c00};
constexpr Object kFunctionGroup{0xffffff80'22d63400};
constexpr Object kEngine{0xffffff80'22e08000};
constexpr Object kStream{0xffffff80'22e0d600};
constexpr Object kPathSet{0xffffff80'22e12340};
constexpr Object kPathArray{0xffffff80'22e124c0};
constexpr Object kPath{0xffffff80'22e13000};
constexpr Object kConverter{0xffffff80'22d6a200};
constexpr Object kMixer{0xffffff80'22d6ae00};
constexpr Object kSpeakerPin{0xffffff80'22d6ba00};
constexpr Object kHeadphonePin{0xffffff80'22d6c600};
constexpr Object kLeftVolume{0xffffff80'22f30400};
constexpr Object kRightVolume{0xffffff80'22f30700};
constexpr Object kPimletDriver{0xffffff80'22f84000};
constexpr Object kUserClient{0xffffff80'23514c00};

// Node ids and verbs of the codec: the node from bit 20 on, a power state to be added.
constexpr uint32_t kConverterNode = 2;
constexpr uint32_t kMixerNode = 12;
constexpr uint32_t kSpeakerNode = 20;
constexpr uint32_t kHeadphoneNode = 21;
constexpr uint32_t setPowerVerb(uint32_t nodeID) { return nodeID << 20 | 0x70500; }
constexpr uint32_t kGetPinSenseVerb = kHeadphoneNode << 20 | 0xF0900;

enum PowerState : uint64_t { asleep, idle, active };
enum EngineState : uint64_t { stopped, runs };
constexpr uint64_t kD0 = 0;
constexpr uint64_t kD3 = 3;
constexpr uint64_t kWordsPerFrame = 3;   // of the link: 16 bits each, for two samples of 24
constexpr uint64_t kOutputPayload = 60;  // what the controller can send
constexpr Ticks kIdleDelay = ms(500);

// A command goes to the codec, whose response comes with an interrupt.
constexpr Step kVerb[] = {
    start(hdaController::kHandleCodecCommandAction, kController, var(verb), active, false),
        sel(0, hdaController::kHandleCodecCommandAction, kController, var(generation), pair(0x1f, 0x1e)),
        wait(us(30), us(60)),
    end(hdaController::kHandleCodecCommandAction, kController, var(generation), 0, kSuccess),
    add(generation, 1),
};

constexpr Step kPowerWidget[] = {
    start(hdaWidget::kSetPowerState, var(widget), kCodec, pair(var(powerState), var(oldPowerState)), false),
        add(verb, var(powerState)), tell(kVerb),
    end(hdaWidget::kSetPowerState, var(widget), var(node), var(powerState), kSuccess),
};

constexpr Step kPowerPathSet[] = {
    start(hdaPathSet::kSetPowerState, kPathSet, kPathArray, 1),
        sel(1, hdaPathSet::kSetPowerState, kPathSet, 0, kPath),
        start(hdaPath::kSetPowerState, kPath, var(powerState), kFunctionGroup, var(oldPowerState)),
            sel(0, hdaPath::kSetPowerState, kPath, 0, kConverter),
            set(widget, kConverter), set(node, kConverterNode), set(verb, setPowerVerb(kConverterNode)),
            tell(kPowerWidget),
            sel(0, hdaPath::kSetPowerState, kPath, 1, kMixer),
            set(widget, kMixer), set(node, kMixerNode), set(verb, setPowerVerb(kMixerNode)),
            tell(kPowerWidget),
            sel(0, hdaPath::kSetPowerState, kPath, 2, kSpeakerPin),
            set(widget, kSpeakerPin), set(node, kSpeakerNode), set(verb, setPowerVerb(kSpeakerNode)),
            tell(kPowerWidget),
        end(hdaPath::kSetPowerState, kPath, 0, 0, kSuccess),
    end(hdaPathSet::kSetPowerState, kPathSet, kPathArray, 1, kSuccess),
};

constexpr Step kGoActive[] = {
    mark(began),
    set(powerState, kD0), set(oldPowerState, kD3),
    start(plexoDevice::kInitiatePowerStateChange, kDriver, idle, active, false),
        start(hdaDriver::kPerformPowerStateChange, kDriver, idle, active, 0),
            start(hdaDriver::kProtectedPowerChangeAction, kDriver, idle, active, false),
                sel(2, hdaDriver::kProtectedPowerChangeAction, kDriver, 0),
                start(hdaDriver::kProtectedPowerChangeActive, kDriver, idle, kFunctionGroup, kD3),
                    sel(0, hdaDriver::kProtectedPowerChangeActive, kDriver, kFunctionGroup),
                    start(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD0),
                        start(hdaFunctionGroup::kSetPowerState, kFunctionGroup, kD0, false),
                            set(verb, setPowerVerb(1)), add(verb, var(powerState)), tell(kVerb),
                            sel(2, hdaFunctionGroup::kSetPowerState, kFunctionGroup, 0, kD0),
                        end(hdaFunctionGroup::kSetPowerState, kFunctionGroup, kD0, false, kSuccess),
                        wait(ms(2), ms(3)),
                    end(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD0, kSuccess),
                end(hdaDriver::kProtectedPowerChangeActive, kDriver, 0, 0, kSuccess),
                start(hdaDriver::kDispatchPowerStateToEngines, kDriver, active, 1),
                    sel(0, hdaDriver::kDispatchPowerStateToEngines, kDriver, 0, kEngine, active),
                    start(hdaEngine::kHandlePowerStateChange, kEngine, idle, active, stopped),
                        start(hdaEngine::kSetPowerStateToActive, kEngine, idle, kPathSet, false),
                            tell(kPowerPathSet),
                            sel(0, hdaEngine::kSetPowerStateToActive, kEngine, kPathSet, pair(kServerRate, 24)),
                        end(hdaEngine::kSetPowerStateToActive, kEngine, active, false, kSuccess),
                    end(hdaEngine::kHandlePowerStateChange, kEngine, active, since(began), kSuccess),
                end(hdaDriver::kDispatchPowerStateToEngines, kDriver, active, 0, kSuccess),
            end(hdaDriver::kProtectedPowerChangeAction, kDriver, active, since(began), kSuccess),
        end(hdaDriver::kPerformPowerStateChange, kDriver, active, 0, kSuccess),
    end(plexoDevice::kInitiatePowerStateChange, kDriver, active, 0, false),
};

constexpr Step kStartDma[] = {
    start(hdaDriver::kStartDMAEngine, kDriver, kEngine, kStream, active),
        sel(1, hdaDriver::kStartDMAEngine, kDriver, kStream, pair(4, 1)),
        start(hdaController::kRequestBandwidth, kController, kStream, kWordsPerFrame, kOutputPayload),
        end(hdaController::kRequestBandwidth, kController, kWordsPerFrame, kOutputPayload, kSuccess),
        mark(began),
        start(hdaController::kResetStreamForOffset, kController, 0x100, 0x040000, 0x20),
            wait(us(20), us(50)),
            sel(0, hdaController::kResetStreamForOffset, kController, 0x100, since(began)),
            wait(us(20), us(50)),
            sel(1, hdaController::kResetStreamForOffset, kController, 0x100, since(began)),
        end(hdaController::kResetStreamForOffset, kController, 0x100, 0x040000, kSuccess),
        start(hdaPathSet::kEnable, kPathSet, kStream, 2, 0),
            sel(0, hdaPathSet::kEnable, kPathSet, 0, kPath),
            start(hdaPath::kEnable, kPath, kStream, 0, 2),
                sel(0, hdaPath::kEnable, kPath, pair(kServerRate, 24), pair(2, 0x11)),
                set(verb, kConverterNode << 20 | 0x70610), tell(kVerb),
            end(hdaPath::kEnable, kPath, kStream, 0, kSuccess),
        end(hdaPathSet::kEnable, kPathSet, kStream, 2, kSuccess),
        start(hdaEngine::kStartDMAEngine, kEngine, kStream, 0x4031, 131072),
            other(hdaEngine::kStartTimestamp, kEngine, now(), now(-180), 0),
            sel(0, hdaEngine::kStartDMAEngine, kEngine, nowNanoseconds(), 0),
        end(hdaEngine::kStartDMAEngine, kEngine, kStream, 0x14001E, kSuccess),
    end(hdaDriver::kStartDMAEngine, kDriver, kEngine, kStream, kSuccess),
};

constexpr Step kStartPlaying[] = {
    start(plexoEngine::kStartClient, kEngine, kUserClient),
        start(plexoEngine::kStartAudioEngine, kEngine, stopped),
            tell(kGoActive),
            start(plexoEngine::kSetState, kEngine, 0, stopped, runs),
                tell(kStartDma),
            end(plexoEngine::kSetState, kEngine, 0, runs, stopped),
        end(plexoEngine::kStartAudioEngine, kEngine, runs, kSuccess),
    end(plexoEngine::kStartClient, kEngine, kUserClient, kSuccess),
};

// The DMA position passes the end of the sample buffer, 16384 frames.
constexpr uint64_t kBufferFrames = 16384;
constexpr Step kWrap[] = {
    add(wrapSample, kBufferFrames),
    other(hdaEngine::kInterruptTimestamp, kEngine, now(), beat(0), var(wrapSample)),
};
constexpr Step kWraps[] = {
    wait(kBufferFrames * kTicksPerFrame, kBufferFrames * kTicksPerFrame),
    everyWhile(kBufferFrames * kTicksPerFrame, running, kWrap),
};

constexpr Step kPeriodicTasks[] = {
    start(hdaController::kProtectedRunPeriodicTasks, kController, active, 1, 0),
    end(hdaController::kProtectedRunPeriodicTasks, kController, false, nanoseconds(ms(1000))),
    start(hdaDriver::kProtectedRunPeriodicTasks, kDriver, active, 1, 0),
        sel(0, plexoEngine::kGetState, kEngine, 0, runs),
    end(hdaDriver::kProtectedRunPeriodicTasks, kDriver, active, nanoseconds(ms(1000))),
};

// What goes wrong. The command gate is held for longer than the I/O thread can wait.

constexpr Ticks kCommandTimeout = ms(15);

// The headphone jack's pin does not answer, and the poll for the response runs into its limit.
constexpr Step kRegisterTimeout[] = {
    start(hdaDriver::kUpdateCachedPinSense, kDriver, kHeadphoneNode, 0),
        start(hdaWidget::kPinSense, kHeadphonePin, kHeadphoneNode, 0x1001C, kD0),
            start(hdaController::kHandleCodecCommandAction, kController, kGetPinSenseVerb, active, false),
                start(hdaController::kPollRegister, kController, 0x5D, pair(1, 1), nanoseconds(kCommandTimeout)),
                    wait(kCommandTimeout, kCommandTimeout + ms(2)),
                    sel(1, hdaController::kPollRegister, kController, pair(0x5D, 1), pair(1, 0), between(880, 940)),
                end(hdaController::kPollRegister, kController, 0x5D, between(880, 940), kTimeout),
            end(hdaController::kHandleCodecCommandAction, kController, var(generation), 0, kTimeout),
            start(hdaController::kCheckCodecCommandTimeout, kController, var(generation), true, active),
                sel(0, hdaController::kCheckCodecCommandTimeout, kController, kGetPinSenseVerb, var(generation)),
            end(hdaController::kCheckCodecCommandTimeout, kController, var(generation), true, active),
            sel(0, hdaWidget::kPinSense, kHeadphonePin, kHeadphoneNode, pair(0, kTimeout)),
        end(hdaWidget::kPinSense, kHeadphonePin, kHeadphoneNode, 0, kTimeout),
    end(hdaDriver::kUpdateCachedPinSense, kDriver, kHeadphoneNode, 0, kTimeout),
    add(generation, 1),
};

// The power adapter is pulled out, and the headset remote's driver is slow to follow.
constexpr Step kSlowPowerChange[] = {
    start(hdaDriver::kSetAggressiveness, kDriver, 6, 1, 2),
        sel(0, hdaDriver::kSetAggressiveness, kDriver, nanoseconds(ms(10'000)), nanoseconds(kIdleDelay)),
    end(hdaDriver::kSetAggressiveness, kDriver, 1, kSuccess),
    mark(stalled),
    start(hdaDriver::kDispatchPowerStateToPimlet, kDriver, kPimletDriver, active, active),
        start(pimlet::kSetPowerState, kPimletDriver, active, idle, 1),
            sel(1, pimlet::kSetPowerState, kPimletDriver),
            wait(ms(15), ms(17)),
            sel(2, pimlet::kSetPowerState, kPimletDriver),
        end(pimlet::kSetPowerState, kPimletDriver, active, false, kSuccess),
    end(hdaDriver::kDispatchPowerStateToPimlet, kDriver, active, since(stalled), kSuccess),
};

constexpr Step kHoldGate[] = {
    oneOf(kSlowPowerChange, kRegisterTimeout),
};

// The client needs the gate, and its samples come after the device has played what stood in their
// place.
constexpr Step kHeldUpCycle[] = {
    start(server::kIoCycle, var(serverSample), now(), kCycleFrames),
        fork(command, kHoldGate),
        start(server::kClient, 0, 0, var(serverSample, 2 * kCycleFrames), beat(2 * kCyclePeriod)),
            join(command),
            wait(us(180), us(420)),
        end(server::kClient),
        set(serverLost, var(serverSample)), add(serverLost, between(760, 840)),
        instant(server::kOverload, var(serverLost), now(), var(serverSample, kCycleFrames), beat(kCyclePeriod)),
    end(server::kIoCycle, var(serverSample, 2 * kCycleFrames), beat(2 * kCyclePeriod)),
    add(serverSample, 2 * kCycleFrames),
};
constexpr Step kHeldUp[] = {
    every(2 * kCyclePeriod, 1, kHeldUpCycle),
};

// No driver held it up: the I/O thread itself came late, as the wake time before and the host time
// after tell.
constexpr Step kLateCycle[] = {
    start(server::kIoCycle, var(serverSample), now(), kCycleFrames),
        set(serverLost, var(serverSample)), add(serverLost, between(580, 680)),
        instant(server::kOverload, var(serverLost), now(), var(serverSample, kCycleFrames), var(stalled, kCyclePeriod)),
    end(server::kIoCycle, var(serverSample, 2 * kCycleFrames), beat(kCyclePeriod)),
    add(serverSample, 2 * kCycleFrames),
};
constexpr Step kWokenLate[] = {
    mark(stalled),
    wait(ms(12), ms(14)),
    every(kCyclePeriod, 1, kLateCycle),
};

constexpr Step kIo[] = {
    start(server::kIoThread, 412, kServerRate),
        tell(kServerAnchor),
        every(kCyclePeriod, between(190, 230), kServerCycle),
        oneOf(kWokenLate, kHeldUp, kHeldUp, kHeldUp),
        every(kCyclePeriod, between(190, 230), kServerCycle),
    end(server::kIoThread),
};

constexpr Step kVolumeKey[] = {
    start(hdaEngine::kBroadcastVolume, kEngine, chars("spkr"), 0, 51),
        sel(0, hdaEngine::kBroadcastVolume, kEngine, kLeftVolume, pair(48, 51)),
        sel(0, hdaEngine::kBroadcastVolume, kEngine, kRightVolume, pair(48, 51)),
    end(hdaEngine::kBroadcastVolume, kEngine, chars("spkr"), 2, kSuccess),
};

constexpr Step kStopPlaying[] = {
    start(hdaEngine::kPerformAudioEngineStop, kEngine, true),
        start(hdaEngine::kStopDMAEngine, kEngine, kStream, 0x14001E, between(0, 131071)),
        end(hdaEngine::kStopDMAEngine, kEngine, kStream, since(began), kSuccess),
        start(hdaPathSet::kDisable, kPathSet),
        end(hdaPathSet::kDisable, kPathSet, 0, 0, kSuccess),
        start(hdaDriver::kProtectedEngineStopped, kDriver, kEngine, 0, 1),
            sel(1, hdaDriver::kProtectedEngineStopped, kDriver, nanoseconds(kIdleDelay)),
        end(hdaDriver::kProtectedEngineStopped, kDriver, 0, active),
    end(hdaEngine::kPerformAudioEngineStop, kEngine, false, kSuccess),
};

constexpr Step kGoIdle[] = {
    mark(began),
    set(powerState, kD3), set(oldPowerState, kD0),
    start(hdaDriver::kProtectedRunPeriodicTasks, kDriver, active, 0, since(stoppedAt)),
        sel(1, hdaDriver::kProtectedRunPeriodicTasks, kDriver, since(stoppedAt), idle),
        start(plexoDevice::kInitiatePowerStateChange, kDriver, active, idle, false),
            start(hdaDriver::kPerformPowerStateChange, kDriver, active, idle, 0),
                start(hdaDriver::kProtectedPowerChangeAction, kDriver, active, idle, false),
                    sel(1, hdaDriver::kProtectedPowerChangeAction, kDriver, 0),
                    start(hdaDriver::kDispatchPowerStateToEngines, kDriver, idle, 1),
                        sel(0, hdaDriver::kDispatchPowerStateToEngines, kDriver, 0, kEngine, idle),
                        start(hdaEngine::kSetPowerStateToIdle, kEngine, active, kPathSet, false),
                            sel(1, hdaEngine::kSetPowerStateToIdle, kEngine, kPathSet, kD3),
                            tell(kPowerPathSet),
                        end(hdaEngine::kSetPowerStateToIdle, kEngine, idle, kPathSet, kSuccess),
                    end(hdaDriver::kDispatchPowerStateToEngines, kDriver, idle, 0, kSuccess),
                    start(hdaDriver::kProtectedPowerChangeIdle, kDriver, active, 0, false),
                        sel(1, hdaDriver::kProtectedPowerChangeIdle, kDriver, kFunctionGroup, kD3),
                        start(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD3),
                            set(verb, setPowerVerb(1)), add(verb, var(powerState)), tell(kVerb),
                        end(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD3, kSuccess),
                    end(hdaDriver::kProtectedPowerChangeIdle, kDriver, kD3, kSuccess),
                end(hdaDriver::kProtectedPowerChangeAction, kDriver, idle, since(began), kSuccess),
            end(hdaDriver::kPerformPowerStateChange, kDriver, idle, 0, kSuccess),
        end(plexoDevice::kInitiatePowerStateChange, kDriver, idle, 0, false),
    end(hdaDriver::kProtectedRunPeriodicTasks, kDriver, idle, nanoseconds(ms(10'000))),
};

constexpr Step kPeriodicTimer[] = {
    wait(ms(600), ms(900)),
    everyWhile(ms(1000), running, kPeriodicTasks),
};

constexpr Step kPlot[] = {
    wait(ms(250), ms(400)),
    set(running, 1), set(generation, between(2000, 9000)),
    tell(kStartPlaying),
    fork(ioThread, kIo), fork(interrupt, kWraps), fork(periodic, kPeriodicTimer),
    wait(ms(900), ms(1300)),
    tell(kVolumeKey),
    join(ioThread),
    tell(kStopPlaying),
    mark(stoppedAt), set(running, 0),
    wait(kIdleDelay, kIdleDelay),
    fork(idleTimer, kGoIdle), join(idleTimer),
    wait(ms(400), ms(700)),
};

}  // namespace

constexpr Story kPlayback = story(kThreads, kPlot);

}  // namespace sonaprobe::sim
