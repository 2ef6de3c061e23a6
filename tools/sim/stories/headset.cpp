// The headset remote: a headset is inserted, its type found at the second try, its identity read
// and published; its buttons are pressed; it is pulled out again.

#include "sim/stories/codes.h"
#include "sim/stories/stories.h"

namespace sonaprobe::sim {
namespace {

enum Role : uint8_t { workLoop, timer };
constexpr Thread kThreads[] = {{0x88, 1}, {0xa4, 3}};

enum Variable : uint8_t { began, response };

constexpr Object kController{0xffffff80'51214000};
constexpr Object kDriver{0xffffff80'5125a800};
constexpr Object kCodec{0xffffff80'51261c00};
constexpr Object kTdmCodec{0xffffff80'51288000};
constexpr Object kPimletDriver{0xffffff80'512c4000};
constexpr Object kEngine{0xffffff80'512e8000};
constexpr Object kPathSets{0xffffff80'512f1a80};
constexpr Object kSpeakers{0xffffff80'512f2340};
constexpr Object kHeadphones{0xffffff80'512f2600};
constexpr Object kVolume{0xffffff80'51330400};

constexpr uint64_t kPinNode = 44;
constexpr uint64_t kTag = 0x37;
constexpr uint32_t kUnsolicited = 0x69610001;  // a message of the controller's
constexpr uint64_t kHeadsetId = 0x1a40c27;
constexpr uint64_t kDebounceTime = nanoseconds(ms(200));
constexpr uint64_t kDetectionTime = nanoseconds(ms(400));
enum HeadsetType : uint64_t { detached = 1, withRemote = 2 };
enum TimerAction : uint64_t { completeJackDetect = 1, detectionTimeout = 2, ackTimeout = 3 };

// Responses: the tag from bit 26 on, what has happened in the low bits.
constexpr uint64_t responseOf(uint64_t event) { return kTag << 26 | event; }
constexpr uint64_t kJackEvent = responseOf(0x1);
constexpr uint64_t kTypeEvent = responseOf(0x2);
constexpr uint64_t kButtonEvent = responseOf(0x4);

// The codec's interrupt comes as an unsolicited response of the HDA link.
constexpr Step kServiceRirb[] = {
    start(hdaController::kServiceRirb, kController, 0x01, between(1, 255), between(1, 255)),
        sel(1, hdaController::kServiceRirb, kController, pair(0, var(response)), kTag),
    end(hdaController::kServiceRirb, kController, 1, 1, between(1, 255)),
};

constexpr Step kJackPlugged[] = {
    start(tdm::kDisambiguateURfromINT, kTdmCodec, kJackEvent, kTag),
        start(tdm::kReadStatusAndClearInterrupt, kTdmCodec, 0x07),
            wait(us(180), us(260)),
            sel(0, tdm::kReadStatusAndClearInterrupt, kTdmCodec, pair(0x21, 0), 0),
        end(tdm::kReadStatusAndClearInterrupt, kTdmCodec, 0x01, 0, kSuccess),
        sel(1, tdm::kDisambiguateURfromINT, kTdmCodec, 0x21),
    end(tdm::kDisambiguateURfromINT, kTdmCodec, kJackEvent, kTag, kSuccess),
    start(hdaDriver::kSendMessageToPimlet, kDriver, kPimletDriver, kUnsolicited, kJackEvent),
        start(pimlet::kHandleJackDetectUR, kPimletDriver, kJackEvent, true, detached),
            sel(1, pimlet::kHandleJackDetectUR, kPimletDriver, kDebounceTime),
            other(pimlet::kSetTimer, kPimletDriver, completeJackDetect, kDebounceTime, 0),
        end(pimlet::kHandleJackDetectUR, kPimletDriver, completeJackDetect, kSuccess),
    end(hdaDriver::kSendMessageToPimlet, kDriver, kUnsolicited, kSuccess),
};

constexpr Step kInsert[] = {
    set(response, kJackEvent),
    tell(kServiceRirb),
    mark(began),
    start(hdaDriver::kMessage, kDriver, kUnsolicited, kCodec, 2),
        sel(0, hdaDriver::kMessage, kDriver, kJackEvent, kPinNode),
        tell(kJackPlugged),
    end(hdaDriver::kMessage, kDriver, kUnsolicited, true, kSuccess),
};

constexpr Step kDetectType[] = {
    start(pimlet::kEnableHSDetection, kPimletDriver, true, 0, 2),
        start(pimlet::kPowerHSBias, kPimletDriver, 0x50),
        end(pimlet::kPowerHSBias, kPimletDriver, 0x24, nanoseconds(ms(20)), kSuccess),
        wait(ms(20), ms(22)),
        start(tdm::kEnableHSDetAutoInt, kTdmCodec, true, 0x05),
            sel(0, tdm::kEnableHSDetAutoInt, kTdmCodec, 0x81),
        end(tdm::kEnableHSDetAutoInt, kTdmCodec, 0x07, kSuccess),
        other(pimlet::kSetTimer, kPimletDriver, detectionTimeout, kDetectionTime, completeJackDetect),
    end(pimlet::kEnableHSDetection, kPimletDriver, true, kDetectionTime, kSuccess),
};

// The debounce time is over and the plug still in.
constexpr Step kCompleteJack[] = {
    other(pimlet::kGeneralTimerCallback, kPimletDriver, completeJackDetect, kDebounceTime, between(kDebounceTime + 8'000, kDebounceTime + 90'000)),
    start(pimlet::kCompleteJackDetectUR, kPimletDriver, 0x80000000, since(began)),
        start(tdm::kGetHeadphonePinSense, kTdmCodec, 0x21, 2),
            wait(us(180), us(260)),
        end(tdm::kGetHeadphonePinSense, kTdmCodec, true, 0x80000000, kSuccess),
        tell(kDetectType),
    end(pimlet::kCompleteJackDetectUR, kPimletDriver, true, detached, kSuccess),
};

constexpr Step kTypeUnknown[] = {
    set(response, kTypeEvent),
    tell(kServiceRirb),
    start(pimlet::kHandleTypeDetectUR, kPimletDriver, kTypeEvent),
        start(tdm::kGetHSDetAutoDone, kTdmCodec, detached, 0),
            wait(us(180), us(260)),
            sel(0, tdm::kGetHSDetAutoDone, kTdmCodec, 0x40),
        end(tdm::kGetHSDetAutoDone, kTdmCodec, false, detached, kSuccess),
        sel(2, pimlet::kHandleTypeDetectUR, kPimletDriver, 1),
    end(pimlet::kHandleTypeDetectUR, kPimletDriver, detached, 1, kSuccess),
};

constexpr Step kSetUpMicrophone[] = {
    start(tdm::kGetExtMicPinSense, kTdmCodec, withRemote, true),
        wait(us(180), us(260)),
        sel(1, tdm::kGetExtMicPinSense, kTdmCodec, 0x5c, 0x30),
    end(tdm::kGetExtMicPinSense, kTdmCodec, true, 0x80000000, kSuccess),
    other(pimlet::kMicrophoneConnected, kPimletDriver, true, withRemote, 0x80000000),
    start(tdm::kEnableExtMicrophone, kTdmCodec, true, false, withRemote),
        sel(1, tdm::kEnableExtMicrophone, kTdmCodec, 0x24),
    end(tdm::kEnableExtMicrophone, kTdmCodec, true, kSuccess),
};

constexpr Step kSetUpButtons[] = {
    start(pimlet::kSetupButtonDetection, kPimletDriver, withRemote, 0, kTag),
        start(tdm::kWritePimlet, kTdmCodec, 0x10, 0x81),
            wait(us(400), us(600)),
        end(tdm::kWritePimlet, kTdmCodec, 0x10, 2, kSuccess),
        other(pimlet::kSetTimer, kPimletDriver, ackTimeout, nanoseconds(ms(100)), detectionTimeout),
    end(pimlet::kSetupButtonDetection, kPimletDriver, 0x1f, true, kSuccess),
};

constexpr Step kTypeFound[] = {
    tell(kServiceRirb),
    start(pimlet::kHandleTypeDetectUR, kPimletDriver, kTypeEvent),
        start(tdm::kGetHSDetAutoDone, kTdmCodec, detached, 1),
            wait(us(180), us(260)),
            sel(1, tdm::kGetHSDetAutoDone, kTdmCodec, 0xC2, withRemote),
        end(tdm::kGetHSDetAutoDone, kTdmCodec, true, withRemote, kSuccess),
        sel(1, pimlet::kHandleTypeDetectUR, kPimletDriver, withRemote),
        other(pimlet::kSetHeadsetType, kPimletDriver, withRemote),
        start(pimlet::kConfigureHeadset, kPimletDriver, withRemote, 0, true),
            other(pimlet::kConfigurePimlet, kPimletDriver, 1),
            start(pimlet::kConfigureForUSHeadset, kPimletDriver, 0x00, false, withRemote),
            end(pimlet::kConfigureForUSHeadset, kPimletDriver, 0x40, true, kSuccess),
            tell(kSetUpMicrophone),
            tell(kSetUpButtons),
        end(pimlet::kConfigureHeadset, kPimletDriver, withRemote, true, kSuccess),
        sel(5, pimlet::kHandleTypeDetectUR, kPimletDriver, withRemote),
        sel(6, pimlet::kHandleTypeDetectUR, kPimletDriver),
    end(pimlet::kHandleTypeDetectUR, kPimletDriver, withRemote, 0, kSuccess),
};

// The remote answers the command that enables its buttons, and says who it is.
constexpr Step kIdentify[] = {
    set(response, kButtonEvent),
    tell(kServiceRirb),
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, 0, withRemote),
        sel(3, pimlet::kHandleButtonDetectUR, kPimletDriver),
        start(tdm::kReadPimlet, kTdmCodec, 0x20, 4),
            sel(0, tdm::kReadPimlet, kTdmCodec, 0x01, 1),
            wait(us(700), us(900)),
        end(tdm::kReadPimlet, kTdmCodec, 0x20, 4, kSuccess),
        other(pimlet::kHeadsetIDStatus, kPimletDriver, kHeadsetId, true, 1),
        start(pimlet::kPublishHeadsetID, kPimletDriver, kHeadsetId, withRemote, 0),
        end(pimlet::kPublishHeadsetID, kPimletDriver, kHeadsetId, kSuccess),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0, kSuccess),
};

constexpr Step kToHeadphones[] = {
    start(hdaEngine::kGetHighestPriorityPathSet, kEngine, kPathSets, 2, kSpeakers),
        sel(0, hdaEngine::kGetHighestPriorityPathSet, kEngine, kHeadphones, 2),
        sel(0, hdaEngine::kGetHighestPriorityPathSet, kEngine, kSpeakers, 1),
    end(hdaEngine::kGetHighestPriorityPathSet, kEngine, kHeadphones, 2, true),
    start(tdm::kEnableHeadphones, kTdmCodec, true, false, withRemote),
        start(tdm::kSetHPOutClamp, kTdmCodec, false, true),
        end(tdm::kSetHPOutClamp, kTdmCodec, false, 0x00, kSuccess),
        sel(0, tdm::kEnableHeadphones, kTdmCodec, 0x06),
        wait(ms(2), ms(3)),
    end(tdm::kEnableHeadphones, kTdmCodec, true, kSuccess),
};

// A button's press and its release; the two volume buttons are heard.
constexpr Step kMiddlePress[] = {
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, kHeadsetId, withRemote),
        sel(4, pimlet::kHandleButtonDetectUR, kPimletDriver),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0x01, kSuccess),
    wait(ms(80), ms(160)),
    tell(kServiceRirb),
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, kHeadsetId, withRemote),
        sel(5, pimlet::kHandleButtonDetectUR, kPimletDriver),
        sel(14, pimlet::kHandleButtonDetectUR, kPimletDriver),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0, kSuccess),
};
constexpr Step kVolumeUp[] = {
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, kHeadsetId, withRemote),
        sel(6, pimlet::kHandleButtonDetectUR, kPimletDriver),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0x02, kSuccess),
    wait(ms(5), ms(9)),
    start(hdaEngine::kBroadcastVolume, kEngine, chars("hdpn"), 0, 38),
        sel(0, hdaEngine::kBroadcastVolume, kEngine, kVolume, pair(35, 38)),
    end(hdaEngine::kBroadcastVolume, kEngine, chars("hdpn"), 1, kSuccess),
    wait(ms(80), ms(160)),
    tell(kServiceRirb),
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, kHeadsetId, withRemote),
        sel(10, pimlet::kHandleButtonDetectUR, kPimletDriver),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0, kSuccess),
};
constexpr Step kVolumeDown[] = {
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, kHeadsetId, withRemote),
        sel(7, pimlet::kHandleButtonDetectUR, kPimletDriver),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0x04, kSuccess),
    wait(ms(5), ms(9)),
    start(hdaEngine::kBroadcastVolume, kEngine, chars("hdpn"), 0, 32),
        sel(0, hdaEngine::kBroadcastVolume, kEngine, kVolume, pair(35, 32)),
    end(hdaEngine::kBroadcastVolume, kEngine, chars("hdpn"), 1, kSuccess),
    wait(ms(80), ms(160)),
    tell(kServiceRirb),
    start(pimlet::kHandleButtonDetectUR, kPimletDriver, kButtonEvent, kHeadsetId, withRemote),
        sel(11, pimlet::kHandleButtonDetectUR, kPimletDriver),
    end(pimlet::kHandleButtonDetectUR, kPimletDriver, 0, kSuccess),
};
constexpr Step kPress[] = {
    tell(kServiceRirb),
    oneOf(kMiddlePress, kVolumeUp, kVolumeDown),
};

constexpr Step kPullOut[] = {
    set(response, kJackEvent),
    tell(kServiceRirb),
    start(hdaDriver::kMessage, kDriver, kUnsolicited, kCodec, 2),
        sel(0, hdaDriver::kMessage, kDriver, kJackEvent, kPinNode),
        start(hdaDriver::kSendMessageToPimlet, kDriver, kPimletDriver, kUnsolicited, kJackEvent),
            start(pimlet::kHandleJackDetectUR, kPimletDriver, kJackEvent, false, withRemote),
                sel(2, pimlet::kHandleJackDetectUR, kPimletDriver, withRemote, kHeadsetId),
                start(pimlet::kHandleJackDisconnectUR, kPimletDriver, kJackEvent, withRemote, 0),
                    start(pimlet::kDisableButtonDetection, kPimletDriver, 0x1f, 0),
                    end(pimlet::kDisableButtonDetection, kPimletDriver, 0, kSuccess),
                    start(pimlet::kEnableHPClamps, kPimletDriver, true, false, false),
                    end(pimlet::kEnableHPClamps, kPimletDriver, 0x03, kSuccess),
                    start(pimlet::kPowerHSBias, kPimletDriver, 0),
                    end(pimlet::kPowerHSBias, kPimletDriver, 0x20, 0, kSuccess),
                    other(pimlet::kSetHeadsetType, kPimletDriver, detached),
                    start(pimlet::kPublishHeadsetID, kPimletDriver, 0, detached, kHeadsetId),
                    end(pimlet::kPublishHeadsetID, kPimletDriver, 0, kSuccess),
                end(pimlet::kHandleJackDisconnectUR, kPimletDriver, true, true, kSuccess),
            end(pimlet::kHandleJackDetectUR, kPimletDriver, 0, kSuccess),
        end(hdaDriver::kSendMessageToPimlet, kDriver, kUnsolicited, kSuccess),
    end(hdaDriver::kMessage, kDriver, kUnsolicited, true, kSuccess),
    start(hdaEngine::kGetHighestPriorityPathSet, kEngine, kPathSets, 2, kHeadphones),
        sel(2, hdaEngine::kGetHighestPriorityPathSet, kEngine, kHeadphones, 2),
        sel(0, hdaEngine::kGetHighestPriorityPathSet, kEngine, kSpeakers, 1),
    end(hdaEngine::kGetHighestPriorityPathSet, kEngine, kSpeakers, 1, true),
};

constexpr Step kPlot[] = {
    wait(ms(250), ms(400)),
    tell(kInsert),
    wait(ms(200), ms(200)),
    fork(timer, kCompleteJack), join(timer),
    wait(ms(90), ms(130)),
    tell(kTypeUnknown),
    wait(ms(90), ms(130)),
    tell(kTypeFound),
    tell(kToHeadphones),
    wait(ms(30), ms(50)),
    tell(kIdentify),
    wait(ms(300), ms(500)),
    every(ms(620), between(4, 7), kPress),
    tell(kPullOut),
    wait(ms(700), ms(1200)),
};

}  // namespace

constexpr Story kHeadset = story(kThreads, kPlot);

}  // namespace sonaprobe::sim
