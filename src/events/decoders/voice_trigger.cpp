// Voice trigger: the always-on microphone engine and the plug-in that reads its samples (class 42).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// One text on any qualifier. What the texts call (ns) is ticks / 24.0, whatever the timebase.
constexpr Entry kVoiceTriggerRows[] = {
    event(0x0524A800, "UpdateZeroTSWrap"),
    any("SampleTime: %lld HostTime(ticks): %lld HostTime(ns): %f (overshoot: %lld)", a2, a3, named("HostTime ns", ticks(a3)), a4),

    event(0x0524A804, "MCACallback"),
    any("inTimeStamp(ns): %f inAOPTimeStamp: %lld inFrameCount: %lld", ticks(a2), a3, a4),

    event(0x0524A808, "MCAHistoricCallback"),
    any("inTimeStamp(ns): %f inAOPTimeStamp: %lld inFrameCount: %lld", ticks(a2), a3, a4),

    ofGroup("NimbrelKitePlugIn", event(0x0524A80C, "MCAReadInputData")),
    any("inTimeStampFrames: %lld inIOBufferFrameSize: %lld", a3, a2),  // the second argument first

    event(0x0524A810, "kVTriggerMsg"),
    any("trigger time(ns): %f, trigger time abs: %lld, triggerLengthFrames: %lld,  woke AP: %s", ticks(a2), named("time abs", a2), a3, yesNo(a4)),  // blanks as they are
};

}  // namespace

constexpr Decoder kVoiceTrigger = decoder<kVoiceTriggerRows, "IONimbrelKiteControl">(audioClass(42), 5);

}  // namespace sonaprobe::decoders
