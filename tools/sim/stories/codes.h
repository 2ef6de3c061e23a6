// The trace codes that the stories use, by the classes that own them. A name is that of the code's
// method, qualified where one method has several codes.

#pragma once

#include <cstdint>

namespace sonaprobe::sim {

namespace server {
constexpr uint32_t kOverload = 0x21040000;
constexpr uint32_t kIoThread = 0x21040004;
constexpr uint32_t kIoCycle = 0x21040008;
constexpr uint32_t kClient = 0x2104000C;
constexpr uint32_t kZeroTimeStamp = 0x21040010;
}  // namespace server

namespace plexoDevice {
constexpr uint32_t kStart = 0x05240C0C;
constexpr uint32_t kSetPowerState = 0x05240C18;
constexpr uint32_t kSetPowerStateAction = 0x05240C20;
constexpr uint32_t kProtectedSetPowerState = 0x05240C24;
constexpr uint32_t kInitiatePowerStateChange = 0x05240C2C;
constexpr uint32_t kCompletePowerStateChange = 0x05240C30;
}  // namespace plexoDevice

namespace plexoEngine {
constexpr uint32_t kStart = 0x05241048;
constexpr uint32_t kStartClient = 0x05241094;
constexpr uint32_t kStartAudioEngine = 0x052410BC;
constexpr uint32_t kResumeAudioEngine = 0x052410C8;
constexpr uint32_t kGetState = 0x052410D8;
constexpr uint32_t kSetState = 0x052410DC;
constexpr uint32_t kWaitForEngineResume = 0x05241160;
}  // namespace plexoEngine

namespace hdaController {
constexpr uint32_t kPollRegister = 0x05245028;
constexpr uint32_t kFramebufferEventHandler = 0x05245074;
constexpr uint32_t kRequestBandwidth = 0x05245078;
constexpr uint32_t kDisplayIsReady = 0x05245080;
constexpr uint32_t kProtectedRunPeriodicTasks = 0x0524508C;
constexpr uint32_t kSetupHostInterface = 0x0524509C;
constexpr uint32_t kResetAudioController = 0x052450CC;
constexpr uint32_t kStartCorb = 0x0524510C;
constexpr uint32_t kStopCorb = 0x05245110;
constexpr uint32_t kHandleCodecCommandAction = 0x05245120;
constexpr uint32_t kServiceRirb = 0x05245128;
constexpr uint32_t kCheckCodecCommandTimeout = 0x0524512C;
constexpr uint32_t kResetStreamForOffset = 0x052451BC;
constexpr uint32_t kSetPowerState = 0x05245220;
constexpr uint32_t kHandleSetPowerState = 0x05245224;
constexpr uint32_t kSetPowerStateGated = 0x05245228;
constexpr uint32_t kShutdownHDAController = 0x05245230;
constexpr uint32_t kGfxSetPowerState = 0x05245234;
constexpr uint32_t kGfxSetPowerStateGated = 0x05245238;
constexpr uint32_t kPowerStateWillChangeTo = 0x05245240;
constexpr uint32_t kPowerStateDidChangeTo = 0x05245244;
}  // namespace hdaController

namespace hdaDriver {
constexpr uint32_t kProtectedRunPeriodicTasks = 0x05245414;
constexpr uint32_t kStartDMAEngine = 0x05245454;
constexpr uint32_t kCreateAudioOutputEngineDP = 0x0524547C;
constexpr uint32_t kDeactivateAudioEngine = 0x0524548C;
constexpr uint32_t kPerformPowerStateChange = 0x052454AC;
constexpr uint32_t kProtectedPowerChangeAction = 0x052454B0;
constexpr uint32_t kProtectedPowerChangeActive = 0x052454B4;
constexpr uint32_t kProtectedPowerChangeIdle = 0x052454B8;
constexpr uint32_t kProtectedPowerChangeSleep = 0x052454BC;
constexpr uint32_t kDispatchPowerStateToEngines = 0x052454C0;
constexpr uint32_t kSetAggressiveness = 0x052454D4;
constexpr uint32_t kDispatchPowerStateToPimlet = 0x052454F8;
constexpr uint32_t kSendMessageToPimlet = 0x052454FC;
constexpr uint32_t kMessage = 0x05245510;
constexpr uint32_t kHandleValidEDIDAction = 0x05245518;
constexpr uint32_t kHandleInvalidEDID = 0x05245520;
constexpr uint32_t kHandleValidEDID = 0x05245524;
constexpr uint32_t kUpdateCachedPinSense = 0x05245554;
constexpr uint32_t kProtectedEngineStopped = 0x05245598;
}  // namespace hdaDriver

namespace hdaEngine {
constexpr uint32_t kPerformAudioEngineStop = 0x05245850;
constexpr uint32_t kStartDMAEngine = 0x05245854;
constexpr uint32_t kStopDMAEngine = 0x05245858;
constexpr uint32_t kControllerForcedPause = 0x0524585C;
constexpr uint32_t kGetHighestPriorityPathSet = 0x052458A0;
constexpr uint32_t kBroadcastVolume = 0x052458E8;
constexpr uint32_t kHandlePowerStateChange = 0x0524596C;
constexpr uint32_t kSetPowerStateToActive = 0x05245974;
constexpr uint32_t kSetPowerStateToIdle = 0x05245978;
constexpr uint32_t kReplaceAvailableFormats = 0x052459E4;
constexpr uint32_t kStartTimestamp = 0x05245A4C;
constexpr uint32_t kInterruptTimestamp = 0x05245A50;
}  // namespace hdaEngine

namespace hdaPath {
constexpr uint32_t kEnable = 0x05245C0C;
constexpr uint32_t kSetPowerState = 0x05245C20;
}  // namespace hdaPath

namespace hdaCodec {
constexpr uint32_t kSetAFGPowerState = 0x0524604C;
}  // namespace hdaCodec

namespace hdaFunctionGroup {
constexpr uint32_t kSetPowerState = 0x0524686C;
}  // namespace hdaFunctionGroup

namespace hdaWidget {
constexpr uint32_t kSetPowerState = 0x05246D38;
constexpr uint32_t kPinSense = 0x05246E30;
}  // namespace hdaWidget

namespace hdaEngineOutputDP {
constexpr uint32_t kSetPowerStateToSleep = 0x05247000;
constexpr uint32_t kSleepFrameBuffer = 0x05247004;
constexpr uint32_t kStopHardware = 0x05247008;
constexpr uint32_t kVideoDidPowerOn = 0x05247010;
constexpr uint32_t kSetPowerStateToActive = 0x05247014;
constexpr uint32_t kHandleEdidStateTransition = 0x05247018;
constexpr uint32_t kPerformWakeNotifications = 0x0524701C;
constexpr uint32_t kVideoWillPowerOff = 0x05247020;
constexpr uint32_t kEnableAudioOutput = 0x0524702C;
}  // namespace hdaEngineOutputDP

namespace hdaPathSet {
constexpr uint32_t kSetPowerState = 0x05247400;
constexpr uint32_t kEnable = 0x05247404;
constexpr uint32_t kDisable = 0x05247408;
}  // namespace hdaPathSet

namespace frameBuffer {
constexpr uint32_t kDebugPm = 0x05247C18;
}  // namespace frameBuffer

namespace tdm {
constexpr uint32_t kDisambiguateURfromINT = 0x05248084;
constexpr uint32_t kReadStatusAndClearInterrupt = 0x05248088;
constexpr uint32_t kGetHeadphonePinSense = 0x0524808C;
constexpr uint32_t kGetExtMicPinSense = 0x05248090;
constexpr uint32_t kEnableHeadphones = 0x05248094;
constexpr uint32_t kEnableExtMicrophone = 0x05248098;
constexpr uint32_t kReadPimlet = 0x052480A4;
constexpr uint32_t kWritePimlet = 0x052480A8;
constexpr uint32_t kSetHPOutClamp = 0x052480AC;
constexpr uint32_t kGetHSDetAutoDone = 0x052480B0;
constexpr uint32_t kEnableHSDetAutoInt = 0x052480B4;
}  // namespace tdm

namespace usbDevice {
constexpr uint32_t kFree = 0x05248C04;
constexpr uint32_t kProtectedInitHardware = 0x05248C1C;
constexpr uint32_t kCheckForStatusInterruptEndpoint = 0x05248C20;
constexpr uint32_t kHandleStatusInterrupt = 0x05248C30;
constexpr uint32_t kStop = 0x05248C44;
constexpr uint32_t kCloseControlInterface = 0x05248CB8;
constexpr uint32_t kDoControlStuff = 0x05248CD4;
constexpr uint32_t kWillTerminate = 0x05248DAC;
constexpr uint32_t kGetAnchorFrameAndTimeStamp = 0x05248DD8;
constexpr uint32_t kUpdateUSBCycleTime = 0x05248DE4;
constexpr uint32_t kDoTimerAction = 0x05248DFC;
constexpr uint32_t kFormatChangeController = 0x05248E00;
}  // namespace usbDevice

namespace usbEngine {
constexpr uint32_t kFree = 0x05249400;
constexpr uint32_t kStop = 0x05249410;
constexpr uint32_t kClipOutputSamples = 0x05249428;
constexpr uint32_t kControlledFormatChange = 0x0524942C;
constexpr uint32_t kConvertInputSamples = 0x05249434;
constexpr uint32_t kInitHardware = 0x0524944C;
constexpr uint32_t kPerformAudioEngineStart = 0x05249474;
constexpr uint32_t kPerformAudioEngineStop = 0x05249478;
constexpr uint32_t kWillTerminate = 0x05249488;
}  // namespace usbEngine

namespace usbStream {
constexpr uint32_t kFree = 0x05249800;
constexpr uint32_t kInitWithAudioEngine = 0x05249804;
constexpr uint32_t kStop = 0x0524980C;
constexpr uint32_t kUpdateUSBFrameListInfo = 0x05249830;
constexpr uint32_t kCoalesceInputSamples = 0x05249834;
constexpr uint32_t kControlledFormatChange = 0x05249840;
constexpr uint32_t kUpdateSampleOffsetAndLatency = 0x05249848;
constexpr uint32_t kCopyAnchor = 0x0524984C;
constexpr uint32_t kJitterFilter = 0x05249850;
constexpr uint32_t kGenerateTimeStamp = 0x05249854;
constexpr uint32_t kConfigureAudioStream = 0x05249864;
constexpr uint32_t kQueueOutputFrames = 0x05249874;
constexpr uint32_t kPrepareWriteFrameList = 0x05249880;
constexpr uint32_t kPrepareUSBStream = 0x052498B8;
constexpr uint32_t kStartUSBStream = 0x052498BC;
constexpr uint32_t kStopUSBStream = 0x052498C0;
constexpr uint32_t kWillTerminate = 0x052498C4;
constexpr uint32_t kWriteFrameList = 0x052498CC;
constexpr uint32_t kProcessWrite = 0x052498D4;
constexpr uint32_t kTakeTimeStamp = 0x052498DC;
constexpr uint32_t kRearmWatchdog = 0x05249910;
constexpr uint32_t kProtectedCloseInterface = 0x05249928;
constexpr uint32_t kDoStartUSBStream = 0x05249938;
}  // namespace usbStream

namespace usbControl {
constexpr uint32_t kWriteForPipe = 0x0524A048;
constexpr uint32_t kDetectSplitTransactions = 0x0524A058;
constexpr uint32_t kSetAlternateInterface = 0x0524A060;
constexpr uint32_t kNewAlternateInterface = 0x0524A194;
}  // namespace usbControl

namespace usbAudio2 {
constexpr uint32_t kStopAudioEngine = 0x0524A400;
constexpr uint32_t kPauseAudioEngine = 0x0524A404;
constexpr uint32_t kTakeTimeStamp = 0x0524A408;
constexpr uint32_t kDoIO = 0x0524A414;
}  // namespace usbAudio2

namespace voiceTrigger {
constexpr uint32_t kUpdateZeroTSWrap = 0x0524A800;
constexpr uint32_t kMCACallback = 0x0524A804;
constexpr uint32_t kMCAReadInputData = 0x0524A80C;
constexpr uint32_t kTriggerMsg = 0x0524A810;
}  // namespace voiceTrigger

namespace embeddedAudio {
constexpr uint32_t kSetAudioEnabledWithFlags = 0x0524AC04;
constexpr uint32_t kSetAudioDisabledWithFlags = 0x0524AC08;
constexpr uint32_t kRegisterWrite = 0x0524AC1C;
constexpr uint32_t kRegisterRead = 0x0524AC20;
constexpr uint32_t kPowerNotification = 0x0524AC30;
constexpr uint32_t kSetPowerStagePSOff = 0x0524AC3C;
constexpr uint32_t kSetPowerStageDesiredFastOn = 0x0524AC48;
constexpr uint32_t kSetPowerStageOn = 0x0524AC4C;
constexpr uint32_t kSetPowerStageDesiredSlowOff = 0x0524AC54;
constexpr uint32_t kSetPowerStageStartedSlowOff = 0x0524AC58;
constexpr uint32_t kChangePowerStage = 0x0524AC68;
}  // namespace embeddedAudio

namespace pimlet {
constexpr uint32_t kHeadsetIDStatus = 0x0524B05C;
constexpr uint32_t kSetHeadsetType = 0x0524B0C8;
constexpr uint32_t kConfigurePimlet = 0x0524B0CC;
constexpr uint32_t kPublishHeadsetID = 0x0524B258;
constexpr uint32_t kSetTimer = 0x0524B25C;
constexpr uint32_t kConfigureHeadset = 0x0524B26C;
constexpr uint32_t kHandleJackDetectUR = 0x0524B274;
constexpr uint32_t kCompleteJackDetectUR = 0x0524B278;
constexpr uint32_t kEnableHSDetection = 0x0524B27C;
constexpr uint32_t kHandleTypeDetectUR = 0x0524B280;
constexpr uint32_t kPowerHSBias = 0x0524B284;
constexpr uint32_t kSetupButtonDetection = 0x0524B288;
constexpr uint32_t kDisableButtonDetection = 0x0524B28C;
constexpr uint32_t kHandleJackDisconnectUR = 0x0524B290;
constexpr uint32_t kHandleButtonDetectUR = 0x0524B294;
constexpr uint32_t kEnableHPClamps = 0x0524B298;
constexpr uint32_t kMicrophoneConnected = 0x0524B2A0;
constexpr uint32_t kConfigureForUSHeadset = 0x0524B2A4;
constexpr uint32_t kGeneralTimerCallback = 0x0524B2A8;
constexpr uint32_t kSetPowerState = 0x0524B2AC;
}  // namespace pimlet

namespace microphone {
constexpr uint32_t kPowerOnHardware = 0x0524B808;
constexpr uint32_t kInterruptAction = 0x0524B81C;
constexpr uint32_t kWriteReg = 0x0524B824;
constexpr uint32_t kStartAudio = 0x0524B82C;
constexpr uint32_t kSetFIFO = 0x0524B830;
constexpr uint32_t kStopAudio = 0x0524B834;
constexpr uint32_t kEnableClocks = 0x0524B838;
constexpr uint32_t kEnableDecimators = 0x0524B83C;
constexpr uint32_t kDmaCompleteAction = 0x0524B84C;
constexpr uint32_t kConfigureFormat = 0x0524B868;
}  // namespace microphone

namespace z58 {
constexpr uint32_t kEnableAudioHW = 0x0524BC00;
constexpr uint32_t kDisableAudioHW = 0x0524BC04;
constexpr uint32_t kSetupAudioInput = 0x0524BC0C;
constexpr uint32_t kSetDMicBclkSwitch = 0x0524BC10;
constexpr uint32_t kSetDMicDataSwitch = 0x0524BC14;
constexpr uint32_t kConfigureSwitches = 0x0524BC1C;
constexpr uint32_t kEnableAudioInput = 0x0524BC24;
constexpr uint32_t kPing = 0x0524BC30;
constexpr uint32_t kPowerOnCodec = 0x0524BC34;
constexpr uint32_t kPowerOffCodec = 0x0524BC38;
constexpr uint32_t kRequestCodecPowerOff = 0x0524BC40;
constexpr uint32_t kEnableInputMute = 0x0524BC4C;
constexpr uint32_t kCodecInterruptAction = 0x0524BC60;
}  // namespace z58

namespace pimletBus {
constexpr uint32_t kInterruptAction = 0x0524C008;
constexpr uint32_t kV11InterruptActionGated = 0x0524C050;
constexpr uint32_t kV11SendDownlinkBufferData = 0x0524C05C;
}  // namespace pimletBus

// What the drivers return.
constexpr uint32_t kSuccess = 0;
constexpr uint32_t kNotResponding = 0xE00002ED;
constexpr uint32_t kTimeout = 0xE00002D6;

}  // namespace sonaprobe::sim
