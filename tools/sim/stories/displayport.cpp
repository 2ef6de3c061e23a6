// Display-port output: a display is connected and plays, the machine sleeps and wakes with it, the
// display has its video back and output goes on, and the display is disconnected.

#include "sim/stories/server.h"
#include "sim/stories/stories.h"

namespace sonaprobe::sim {
namespace {

enum Role : uint8_t { display, client, ioThread, power, interrupt, video };
constexpr Thread kThreads[] = {{0x3f2, 3}, {0x1e48, 6}, {0x1e63, 4}, {0x66, 0}, {0x74, 1}, {0x7f, 2}};

enum Variable : uint8_t { began = firstOwnVariable, slept, reset, running, wrapSample };

constexpr Object kController{0xffffff80'40b1c000};
constexpr Object kGraphics{0xffffff80'40a02000};
constexpr Object kFramebuffer{0xffffff80'40a4d800};
constexpr Object kDriver{0xffffff80'40b5e800};
constexpr Object kCodec{0xffffff80'40b66c00};
constexpr Object kFunctionGroup{0xffffff80'40b68400};
constexpr Object kRegisters{0xffffff91'20e40000};
constexpr Object kEngine{0xffffff80'40c10000};
constexpr Object kStream{0xffffff80'40c15600};
constexpr Object kPathSet{0xffffff80'40c1a340};
constexpr Object kPath{0xffffff80'40c1b000};
constexpr Object kPolicyMaker{0xffffff80'40b71d00};
constexpr Object kUserClient{0xffffff80'40d44c00};

constexpr uint32_t kCrtc = 1;
constexpr uint32_t kPinNode = 5;
enum PowerState : uint64_t { asleep, idle, active };
enum EngineState : uint64_t { stopped, runs, paused, resumed };
enum EdidState : uint64_t { noDisplay, videoOff, validEdid };
constexpr uint64_t kD0 = 0;
constexpr uint64_t kD3 = 3;
constexpr uint64_t kDisplayReady = 1 << kCrtc;
constexpr uint64_t kCheck = 0xbeef;  // a guard word around the frame buffer's calls

constexpr Step kFindDisplay[] = {
    start(hdaDriver::kUpdateCachedPinSense, kDriver, kPinNode, 0),
        start(hdaController::kDisplayIsReady, kController, pair(2, kCrtc), kDisplayReady, active),
        end(hdaController::kDisplayIsReady, kController, kCrtc, true, kDisplayReady),
        wait(us(60), us(120)),
        sel(0, hdaDriver::kUpdateCachedPinSense, kDriver, true, true),
    end(hdaDriver::kUpdateCachedPinSense, kDriver, kPinNode, 0xC0000000, kSuccess),
    start(hdaDriver::kCreateAudioOutputEngineDP, kDriver, kFramebuffer, kCrtc, kPinNode),
        wait(us(400), us(700)),
        start(plexoEngine::kStart, kEngine, kDriver, kDriver),
        end(plexoEngine::kStart, kEngine, kDriver, kDriver, true),
    end(hdaDriver::kCreateAudioOutputEngineDP, kDriver, kEngine, kCrtc, kSuccess),
    sel(0, hdaDriver::kHandleValidEDIDAction, kDriver, kCrtc, pair(kServerRate, 2)),
    start(hdaEngine::kReplaceAvailableFormats, kEngine, kStream, 3, kPathSet),
        sel(0, hdaEngine::kReplaceAvailableFormats, kEngine, pair(32000, 24), pair(2, 0x11)),
        sel(0, hdaEngine::kReplaceAvailableFormats, kEngine, pair(44100, 24), pair(2, 0x11)),
        sel(0, hdaEngine::kReplaceAvailableFormats, kEngine, pair(kServerRate, 24), pair(2, 0x11)),
    end(hdaEngine::kReplaceAvailableFormats, kEngine, kStream, 3, kSuccess),
    start(hdaEngineOutputDP::kHandleEdidStateTransition, kEngine, kCrtc, noDisplay, validEdid),
    end(hdaEngineOutputDP::kHandleEdidStateTransition, kEngine, noDisplay, validEdid, kSuccess),
};

constexpr Step kConnect[] = {
    start(hdaController::kFramebufferEventHandler, kController, kFramebuffer, 2, 0),
    end(hdaController::kFramebufferEventHandler, kController, 2, kDisplayReady, kSuccess),
    wait(ms(20), ms(40)),
    start(hdaDriver::kHandleValidEDID, kDriver, kCrtc, kFramebuffer, 256),
        start(hdaDriver::kHandleValidEDIDAction, kDriver, kCrtc, 0, active),
            tell(kFindDisplay),
        end(hdaDriver::kHandleValidEDIDAction, kDriver, kCrtc, 3, kSuccess),
    end(hdaDriver::kHandleValidEDID, kDriver, kCrtc, kSuccess),
};

constexpr Step kEnableOutput[] = {
    start(hdaEngineOutputDP::kEnableAudioOutput, kEngine, kCrtc, true, false),
        wait(us(200), us(400)),
    end(hdaEngineOutputDP::kEnableAudioOutput, kEngine, kCrtc, true, kSuccess),
};

constexpr Step kStartDma[] = {
    start(hdaDriver::kStartDMAEngine, kDriver, kEngine, kStream, active),
        sel(1, hdaDriver::kStartDMAEngine, kDriver, kStream, pair(5, 2)),
        start(hdaPathSet::kEnable, kPathSet, kStream, 2, 0),
            sel(0, hdaPathSet::kEnable, kPathSet, 0, kPath),
            start(hdaPath::kEnable, kPath, kStream, 0, 2),
                sel(0, hdaPath::kEnable, kPath, pair(kServerRate, 24), pair(2, 0x11)),
            end(hdaPath::kEnable, kPath, kStream, 0, kSuccess),
        end(hdaPathSet::kEnable, kPathSet, kStream, 2, kSuccess),
        mark(began), set(wrapSample, 0),
        start(hdaEngine::kStartDMAEngine, kEngine, kStream, 0x4031, 131072),
            other(hdaEngine::kStartTimestamp, kEngine, now(), now(-180), 0),
        end(hdaEngine::kStartDMAEngine, kEngine, kStream, 0x24001E, kSuccess),
        tell(kEnableOutput),
    end(hdaDriver::kStartDMAEngine, kDriver, kEngine, kStream, kSuccess),
};

constexpr Step kStartPlaying[] = {
    start(plexoEngine::kStartClient, kEngine, kUserClient),
        start(plexoEngine::kStartAudioEngine, kEngine, stopped),
            start(plexoEngine::kSetState, kEngine, 0, stopped, runs),
                tell(kStartDma),
            end(plexoEngine::kSetState, kEngine, 0, runs, stopped),
        end(plexoEngine::kStartAudioEngine, kEngine, runs, kSuccess),
    end(plexoEngine::kStartClient, kEngine, kUserClient, kSuccess),
};

constexpr uint64_t kBufferFrames = 16384;
constexpr Step kWrap[] = {
    add(wrapSample, kBufferFrames),
    other(hdaEngine::kInterruptTimestamp, kEngine, now(), beat(), var(wrapSample)),
};
constexpr Step kWraps[] = {
    wait(kBufferFrames * kTicksPerFrame, kBufferFrames * kTicksPerFrame),
    everyWhile(kBufferFrames * kTicksPerFrame, running, kWrap),
};
constexpr Step kIo[] = {
    start(server::kIoThread, 412, kServerRate),
        tell(kServerAnchor),
        everyWhile(kCyclePeriod, serverRunning, kServerCycle),
    end(server::kIoThread),
};

constexpr Step kRun[] = {
    set(running, 1), set(serverRunning, 1),
    fork(ioThread, kIo), fork(interrupt, kWraps),
};

constexpr Step kVideoOff[] = {
    start(frameBuffer::kDebugPm, kFramebuffer, kCrtc, pair(2, 0), pair(kCheck, 0)),
        sel(1, frameBuffer::kDebugPm, kFramebuffer, kCrtc),
        start(hdaEngineOutputDP::kVideoWillPowerOff, kEngine, kCrtc, validEdid, true),
            sel(0, hdaEngineOutputDP::kVideoWillPowerOff, kEngine, 1),
            start(plexoEngine::kSetState, kEngine, 0, runs, paused),
            end(plexoEngine::kSetState, kEngine, 0, paused, runs),
        end(hdaEngineOutputDP::kVideoWillPowerOff, kEngine, videoOff, true, kSuccess),
        wait(ms(30), ms(50)),
        sel(2, frameBuffer::kDebugPm, kFramebuffer, kCrtc),
    end(frameBuffer::kDebugPm, kFramebuffer, kCrtc, 0, kCheck),
};

constexpr Step kEngineToSleep[] = {
    start(hdaEngineOutputDP::kSetPowerStateToSleep, kEngine, active, videoOff, true),
        sel(0, hdaEngineOutputDP::kSetPowerStateToSleep, kEngine, 1),
        start(hdaEngineOutputDP::kStopHardware, kEngine, kStream, true, true),
            sel(0, hdaEngineOutputDP::kStopHardware, kEngine, kCrtc, kStream),
            start(hdaEngineOutputDP::kEnableAudioOutput, kEngine, kCrtc, false, true),
                wait(us(200), us(400)),
            end(hdaEngineOutputDP::kEnableAudioOutput, kEngine, kCrtc, false, kSuccess),
            start(hdaEngine::kStopDMAEngine, kEngine, kStream, 0x24001E, between(0, 131071)),
            end(hdaEngine::kStopDMAEngine, kEngine, kStream, since(began), kSuccess),
        end(hdaEngineOutputDP::kStopHardware, kEngine, kStream, false, kSuccess),
        start(hdaPathSet::kDisable, kPathSet),
        end(hdaPathSet::kDisable, kPathSet, 0, 0, kSuccess),
        start(hdaEngineOutputDP::kSleepFrameBuffer, kEngine, kFramebuffer, kCrtc, 1),
            sel(0, hdaEngineOutputDP::kSleepFrameBuffer, kEngine, kFramebuffer, kCrtc),
        end(hdaEngineOutputDP::kSleepFrameBuffer, kEngine, kFramebuffer, 0, kSuccess),
    end(hdaEngineOutputDP::kSetPowerStateToSleep, kEngine, asleep, false, kSuccess),
};

constexpr Step kDriverToSleep[] = {
    start(plexoDevice::kInitiatePowerStateChange, kDriver, active, asleep, false),
        start(hdaDriver::kPerformPowerStateChange, kDriver, active, asleep, 1),
            start(hdaDriver::kProtectedPowerChangeAction, kDriver, active, asleep, false),
                sel(0, hdaDriver::kProtectedPowerChangeAction, kDriver, 1),
                start(hdaDriver::kProtectedPowerChangeSleep, kDriver, active, 1, true),
                    start(hdaDriver::kDispatchPowerStateToEngines, kDriver, asleep, 1),
                        sel(0, hdaDriver::kDispatchPowerStateToEngines, kDriver, 0, kEngine, asleep),
                        tell(kEngineToSleep),
                    end(hdaDriver::kDispatchPowerStateToEngines, kDriver, asleep, 0, kSuccess),
                    start(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD3),
                        wait(us(60), us(110)),
                    end(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD3, kSuccess),
                end(hdaDriver::kProtectedPowerChangeSleep, kDriver, 1, kD3, kSuccess),
            end(hdaDriver::kProtectedPowerChangeAction, kDriver, asleep, since(slept), kSuccess),
        end(hdaDriver::kPerformPowerStateChange, kDriver, asleep, 0, kSuccess),
    end(plexoDevice::kInitiatePowerStateChange, kDriver, asleep, 0, false),
};

constexpr Step kControllerToSleep[] = {
    start(hdaController::kSetPowerState, kController, asleep),
        start(hdaController::kHandleSetPowerState, kController, asleep, active, 0),
            start(hdaController::kSetPowerStateGated, kController, asleep, active, 0),
                sel(1, hdaController::kSetPowerStateGated, kController, 0, 0),
                start(hdaController::kStopCorb, kController, 0x02, pair(0x3a, 0x3a), 0),
                end(hdaController::kStopCorb, kController, 0x00, 0, kSuccess),
                start(hdaController::kShutdownHDAController, kController, active, 0, 0xC0000000),
                    sel(1, hdaController::kShutdownHDAController, kController, 0, 0),
                end(hdaController::kShutdownHDAController, kController, 0, 1 << 2),
                start(hdaController::kGfxSetPowerState, kController, idle, active, asleep),
                    start(hdaController::kGfxSetPowerStateGated, kController, idle, kGraphics, 1),
                    end(hdaController::kGfxSetPowerStateGated, kController, idle, 0, kSuccess),
                end(hdaController::kGfxSetPowerState, kController, idle, kSuccess),
            end(hdaController::kSetPowerStateGated, kController, asleep, since(began), kSuccess),
        end(hdaController::kHandleSetPowerState, kController, asleep, true, kSuccess),
    end(hdaController::kSetPowerState, kController, asleep, 0, 0),
};

constexpr Step kSleep[] = {
    mark(slept),
    start(plexoDevice::kSetPowerState, kDriver, asleep, active, asleep),
        start(plexoDevice::kSetPowerStateAction, kDriver, asleep, kPolicyMaker),
            start(plexoDevice::kProtectedSetPowerState, kDriver, asleep, kDriver, false),
                sel(0, plexoDevice::kProtectedSetPowerState, kDriver, active, active),
                tell(kDriverToSleep),
            end(plexoDevice::kProtectedSetPowerState, kDriver, asleep, kDriver, kSuccess),
        end(plexoDevice::kSetPowerStateAction, kDriver, asleep, kPolicyMaker, kSuccess),
    end(plexoDevice::kSetPowerState, kDriver, asleep, kDriver, kSuccess),
    wait(ms(2), ms(4)),
    mark(began),
    tell(kControllerToSleep),
};

constexpr Step kControllerAwake[] = {
    mark(began),
    start(hdaController::kSetPowerState, kController, active),
        start(hdaController::kHandleSetPowerState, kController, active, asleep, 0),
            start(hdaController::kSetPowerStateGated, kController, active, asleep, 0),
                start(hdaController::kGfxSetPowerState, kController, active, idle, asleep),
                    start(hdaController::kGfxSetPowerStateGated, kController, active, kGraphics, 0),
                        start(hdaController::kPowerStateWillChangeTo, kController, kGraphics, active, 0x2),
                        end(hdaController::kPowerStateWillChangeTo, kController, active, 9000),
                        wait(ms(7), ms(9)),
                        start(hdaController::kPowerStateDidChangeTo, kController, kGraphics, active, 0x2),
                        end(hdaController::kPowerStateDidChangeTo, kController, active, 0),
                    end(hdaController::kGfxSetPowerStateGated, kController, active, 1, kSuccess),
                end(hdaController::kGfxSetPowerState, kController, active, kSuccess),
                sel(0, hdaController::kSetPowerStateGated, kController, active, 1 << 2),
                mark(reset),
                start(hdaController::kResetAudioController, kController, 0, 0, asleep),
                    wait(us(110), us(160)),
                    sel(0, hdaController::kResetAudioController, kController, 0, since(reset)),
                    wait(us(520), us(650)),
                    sel(1, hdaController::kResetAudioController, kController, 1, since(reset)),
                end(hdaController::kResetAudioController, kController, 1, 1 << 2, kSuccess),
                start(hdaController::kSetupHostInterface, kController),
                    sel(0, hdaController::kSetupHostInterface, kController, 0x020400),
                    sel(1, hdaController::kSetupHostInterface, kController, 0x3f0a4000, pair(256, 256)),
                    start(hdaController::kStartCorb, kController, 0, 0, 0),
                    end(hdaController::kStartCorb, kController, 0x02, 0x42, kSuccess),
                end(hdaController::kSetupHostInterface, kController, kRegisters, 0x2401, kSuccess),
            end(hdaController::kSetPowerStateGated, kController, active, since(began), kSuccess),
            sel(0, hdaController::kHandleSetPowerState, kController, active, since(began)),
        end(hdaController::kHandleSetPowerState, kController, active, true, kSuccess),
    end(hdaController::kSetPowerState, kController, active, 0, 0),
};

constexpr Step kEngineAwake[] = {
    start(hdaEngineOutputDP::kSetPowerStateToActive, kEngine, asleep, videoOff, true),
        sel(0, hdaEngineOutputDP::kSetPowerStateToActive, kEngine, kFramebuffer, kPathSet),
    end(hdaEngineOutputDP::kSetPowerStateToActive, kEngine, active, videoOff, kSuccess),
};

constexpr Step kDriverAwake[] = {
    mark(began),
    start(plexoDevice::kSetPowerState, kDriver, active, asleep, active),
        start(plexoDevice::kSetPowerStateAction, kDriver, active, kPolicyMaker),
            start(plexoDevice::kProtectedSetPowerState, kDriver, active, kDriver, false),
                sel(1, plexoDevice::kProtectedSetPowerState, kDriver, asleep, 0),
                start(hdaDriver::kPerformPowerStateChange, kDriver, asleep, active, 0),
                    start(hdaDriver::kProtectedPowerChangeAction, kDriver, asleep, active, false),
                        sel(2, hdaDriver::kProtectedPowerChangeAction, kDriver, 1),
                        start(hdaDriver::kProtectedPowerChangeActive, kDriver, asleep, kFunctionGroup, kD3),
                            sel(0, hdaDriver::kProtectedPowerChangeActive, kDriver, kFunctionGroup),
                            start(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD0),
                                wait(ms(2), ms(3)),
                            end(hdaCodec::kSetAFGPowerState, kCodec, kFunctionGroup, kD0, kSuccess),
                            sel(1, hdaDriver::kProtectedPowerChangeActive, kDriver, kFunctionGroup, 6),
                        end(hdaDriver::kProtectedPowerChangeActive, kDriver, 0, 1, kSuccess),
                        start(hdaDriver::kDispatchPowerStateToEngines, kDriver, active, 1),
                            sel(0, hdaDriver::kDispatchPowerStateToEngines, kDriver, 0, kEngine, active),
                            tell(kEngineAwake),
                        end(hdaDriver::kDispatchPowerStateToEngines, kDriver, active, 0, kSuccess),
                    end(hdaDriver::kProtectedPowerChangeAction, kDriver, active, since(began), kSuccess),
                end(hdaDriver::kPerformPowerStateChange, kDriver, active, 0, kSuccess),
            end(plexoDevice::kProtectedSetPowerState, kDriver, active, kDriver, kSuccess),
        end(plexoDevice::kSetPowerStateAction, kDriver, active, kPolicyMaker, kSuccess),
        start(plexoDevice::kCompletePowerStateChange, kDriver, asleep, active, false),
        end(plexoDevice::kCompletePowerStateChange, kDriver, active, active, kSuccess),
    end(plexoDevice::kSetPowerState, kDriver, active, kDriver, kSuccess),
};

// The client is awake before the display is.
constexpr Step kAwaitEngine[] = {
    start(plexoEngine::kWaitForEngineResume, kEngine, paused),
        sel(0, plexoEngine::kWaitForEngineResume, kEngine, paused),
        join(video),
    end(plexoEngine::kWaitForEngineResume, kEngine, resumed, kSuccess),
};

constexpr Step kResumeEngine[] = {
    start(plexoEngine::kResumeAudioEngine, kEngine, paused),
        tell(kStartDma),
        sel(0, plexoEngine::kResumeAudioEngine, kEngine, resumed),
    end(plexoEngine::kResumeAudioEngine, kEngine, resumed, kSuccess),
};

constexpr Step kVideoOn[] = {
    start(frameBuffer::kDebugPm, kFramebuffer, kCrtc, pair(0, 2), pair(kCheck, 0)),
        sel(4, frameBuffer::kDebugPm, kFramebuffer, kCrtc),
        start(hdaEngineOutputDP::kPerformWakeNotifications, kEngine, 1, videoOff, active),
            sel(0, hdaEngineOutputDP::kPerformWakeNotifications, kEngine, 0, validEdid),
        end(hdaEngineOutputDP::kPerformWakeNotifications, kEngine, pair(1, 0), videoOff, kSuccess),
        sel(5, frameBuffer::kDebugPm, kFramebuffer, kCrtc),
        wait(ms(260), ms(340)),
        sel(6, frameBuffer::kDebugPm, kFramebuffer, kCrtc),
        start(hdaEngineOutputDP::kVideoDidPowerOn, kEngine, kCrtc, videoOff, true),
            sel(0, hdaEngineOutputDP::kVideoDidPowerOn, kEngine, since(slept)),
            tell(kResumeEngine),
        end(hdaEngineOutputDP::kVideoDidPowerOn, kEngine, validEdid, true, kSuccess),
    end(frameBuffer::kDebugPm, kFramebuffer, kCrtc, 0, kCheck),
};

constexpr Step kDisconnect[] = {
    start(hdaDriver::kHandleInvalidEDID, kDriver, kCrtc, kFramebuffer, kEngine),
        sel(0, hdaDriver::kHandleInvalidEDID, kDriver, kCrtc, kEngine),
        start(hdaEngineOutputDP::kHandleEdidStateTransition, kEngine, kCrtc, validEdid, noDisplay),
            start(plexoEngine::kSetState, kEngine, 0, runs, stopped),
                start(hdaEngine::kStopDMAEngine, kEngine, kStream, 0x24001E, between(0, 131071)),
                end(hdaEngine::kStopDMAEngine, kEngine, kStream, since(began), kSuccess),
            end(plexoEngine::kSetState, kEngine, 0, stopped, runs),
        end(hdaEngineOutputDP::kHandleEdidStateTransition, kEngine, validEdid, noDisplay, kSuccess),
        start(hdaDriver::kDeactivateAudioEngine, kDriver, true, kEngine, false),
        end(hdaDriver::kDeactivateAudioEngine, kDriver, kEngine, 0, kSuccess),
    end(hdaDriver::kHandleInvalidEDID, kDriver, kCrtc, true, kSuccess),
};

constexpr Step kPlot[] = {
    wait(ms(250), ms(400)),
    tell(kConnect),
    wait(ms(120), ms(200)),
    fork(client, kStartPlaying), join(client),
    tell(kRun),
    wait(ms(1300), ms(1700)),
    set(serverRunning, 0), set(running, 0),
    fork(video, kVideoOff), join(video),
    fork(power, kSleep), join(power),
    wait(ms(1200), ms(1600)),
    fork(power, kControllerAwake), join(power),
    fork(power, kDriverAwake), join(power),
    fork(video, kVideoOn), fork(client, kAwaitEngine), join(client),
    tell(kRun),
    wait(ms(1300), ms(1700)),
    set(serverRunning, 0), set(running, 0),
    tell(kDisconnect),
    wait(ms(500), ms(800)),
};

}  // namespace

constexpr Story kDisplayPort = story(kThreads, kPlot);

}  // namespace sonaprobe::sim
