// The embedded audio controller, which the embedded codecs derive from: who has audio enabled, the
// codecs' registers, and the ladder of power stages (class 43).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// The character after a register's address is the low byte of arg3. A single register access is one
// trace point, so its text answers every qualifier. The power texts begin with the stage that the
// method finds and the notification that it acts for.
constexpr Entry kEmbeddedAudioRows[] = {
    event(0x0524AC00, "SetAudioEnabled"),
    start("Start - enable: %s _enableCount: %lld _powerStage: %lld", boolean(a2), a3, a4),
    end("End - enable: %s _enableCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "first client, asking for power - _powerStage: %lld", a2),
    sel(1, "last client gone, letting power go - _powerStage: %lld", a2),
    sel(2, "codec stays as it is for the other clients - _enableCount: %lld", a2),

    event(0x0524AC04, "SetAudioEnabledWithFlags"),
    start("Start - flags to enable: 0x%llx _enabledFlags: 0x%llx _powerStage: %lld", a2, a3, a4),
    end("End - _enabledFlags: 0x%llx _powerStage: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "flags: 0x%llx were enabled before - nothing to turn on", a2),
    sel(1, "commandSleep until the hardware is on - _powerStage: %lld newly enabled flags: 0x%llx", a2, a3),
    sel(2, "commandSleep timed out after %d.%03d.%03d.%03d, but _powerStage (%lld) is not on!", nanos(a2), a3),

    event(0x0524AC08, "SetAudioDisabledWithFlags"),
    start("Start - flags to disable: 0x%llx _enabledFlags: 0x%llx _secondaryFlags: 0x%llx", a2, a3, a4),
    end("End - flags still enabled: 0x%llx _powerStage: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "flags: 0x%llx were not enabled - unbalanced disable ignored", a2),
    sel(1, "hardware stays on for _enabledFlags: 0x%llx _secondaryFlags: 0x%llx", a2, a3),
    sel(2, "nothing enabled any more, calling ChangePowerStage(%lld)", a2),

    event(0x0524AC0C, "SecondaryAudioStart"),
    start("Start - secondary: %p _secondaryCount: %lld _powerStage: %lld", a2, a3, a4),
    end("End - _secondaryCount: %lld bus clocks running: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "primary is not enabled, powering the codec for the secondary alone - _powerStage: %lld", a2),

    event(0x0524AC10, "SecondaryAudioStop"),
    start("Start - secondary: %p _secondaryCount: %lld primaryEnabled: %s", a2, a3, boolean(a4)),
    end("End - secondary: %p _secondaryCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last secondary stopped, primary still has _enabledFlags: 0x%llx", a2),
    sel(1, "secondary: %p was never started - ignored", a2),

    event(0x0524AC14, "SecondaryAudioStartWithFlags"),
    start("Start - secondary: %p asks for flags: 0x%llx _secondaryFlags: 0x%llx", a2, a3, a4),
    end("End - _secondaryFlags: 0x%llx _secondaryCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "flags: 0x%llx need a faster start than stage: %lld gives - going fast on", a2, a3),

    event(0x0524AC18, "SecondaryAudioStopWithFlags"),
    start("Start - secondary: %p gives up flags: 0x%llx of _secondaryFlags: 0x%llx", a2, a3, a4),
    end("End - secondary flags still set: 0x%llx _powerStage: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "flags: 0x%llx are shared with another secondary: %p - keeping them", a2, a3),

    event(0x0524AC1C, "RegisterWrite"),
    any("register: 0x%llx[%c] value: 0x%llx", a2, character(byte(0, a3)), a4),

    event(0x0524AC20, "RegisterRead"),
    any("register: 0x%llx[%c] value: 0x%llx", a2, character(byte(0, a3)), a4),

    event(0x0524AC24, "RegisterFailure"),
    any("register: 0x%llx[%c] value: 0x%llx ERROR: transfer returned: 0x%08x after %d attempts", a2, character(byte(0, a3)), a4, hi(a3), byte(1, a3)),

    event(0x0524AC28, "RegisterWriteMultiple"),
    start("startRegister: 0x%llx[%c]", a2, character(byte(0, a3))),
    end("End - startRegister: 0x%llx[%c] registers written: %d result: 0x%08x", a2, character(byte(0, a3)), hi(a4), lo(a4)),
    other("register: 0x%llx[%c] value: 0x%llx", a2, character(byte(0, a3)), a4),

    event(0x0524AC2C, "RegisterReadMultiple"),
    start("startRegister: 0x%llx[%c]", a2, character(byte(0, a3))),
    end("End - startRegister: 0x%llx[%c] registers read: %d result: 0x%08x", a2, character(byte(0, a3)), hi(a4), lo(a4)),
    other("register: 0x%llx[%c] value: 0x%llx", a2, character(byte(0, a3)), a4),

    event(0x0524AC30, "PowerNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx", a2, a3),
    end("End - _powerStage: %lld notify->powerRef %llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "queued behind the change to stage: %lld - _pendingNotifications: %lld", a2, a3),
    sel(1, "stage: %lld already fits, acknowledging notify->powerRef %llx at once", a2, a3),

    event(0x0524AC34, "PriorityPowerNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx going ahead of _pendingNotifications: %lld", a2, a3, a4),
    end("End - _powerStage: %lld gone ahead after %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "breaking off the change to stage: %lld of powerRef %llx", a2, a3),

    event(0x0524AC38, "VetoSleepWakeNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx audio in use: _enabledFlags: 0x%llx", a2, a3, a4),
    end("End - vetoed: %s notify->powerRef %llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "secondary audio must go on in sleep - _secondaryFlags: 0x%llx _secondaryCount: %lld", a2, a3),
    sel(1, "sleep has begun in stage: %lld - too late to veto", a2),

    event(0x0524AC3C, "SetPowerStagePSOff"),
    start("_powerStage: %lld notify->powerRef %llx going off with the power state, audio left enabled: 0x%llx", a2, a3, a4),
    end("End - _powerStage: %lld codec in reset: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "stage was still: %lld, no ramp - expect a pop", a2),

    event(0x0524AC40, "SetPowerStageEarlyOff"),
    start("_powerStage: %lld notify->powerRef %llx muting ahead of the other drivers, running streams: %lld", a2, a3, a4),
    end("End - _powerStage: %lld clocks left running: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "secondary: %p not finished, leaving its clocks to power state off - _secondaryFlags: 0x%llx", a2, a3),

    event(0x0524AC44, "SetPowerStageDesiredSlowOn"),
    start("_powerStage: %lld notify->powerRef %llx ramping the bias up over %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _powerStage: %lld stage On due in %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "bias still at %lld mV of the last ramp down, going on from there", a2),

    event(0x0524AC48, "SetPowerStageDesiredFastOn"),
    start("_powerStage: %lld notify->powerRef %llx skipping the ramp, preWarmed: %s", a2, a3, boolean(a4)),
    end("End - _powerStage: %lld codec ready after %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "slow on of powerRef %llx in progress, cutting %d.%03d.%03d.%03d off its ramp", a2, nanos(a3)),

    event(0x0524AC4C, "SetPowerStageOn"),
    start("_powerStage: %lld notify->powerRef %llx power is up, enabling hardware for _enabledFlags: 0x%llx", a2, a3, a4),
    end("End - _powerStage: %lld codecReady: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "calling commandWakeup for waiting clients: %lld", a2),

    event(0x0524AC50, "SetPowerStageDesiredFastOff"),
    start("_powerStage: %lld notify->powerRef %llx cutting power without idle time, running streams: %lld", a2, a3, a4),
    end("End - _powerStage: %lld outputs off after %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "stream: %lld still has %lld frames to play - muting it", a2, a3),

    event(0x0524AC54, "SetPowerStageDesiredSlowOff"),
    start("_powerStage: %lld notify->powerRef %llx nothing enabled, off after an idle time of %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _powerStage: %lld _slowOffTimer armed: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "_slowOffTimer already runs, due in %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524AC58, "SetPowerStageStartedSlowOff"),
    start("_powerStage: %lld notify->powerRef %llx idle time over, ramping the bias down over %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _powerStage: %lld ramp took %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "client with flags: 0x%llx came back during the ramp, turning round at %lld mV", a2, a3),

    event(0x0524AC5C, "SetPowerDesiredShutdown"),
    start("_powerStage: %lld notify->powerRef %llx system going down, acknowledge due in %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _powerStage: %lld closed to new clients: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "throwing away _pendingNotifications: %lld, the last with powerRef %llx", a2, a3),

    event(0x0524AC60, "SetPowerCancelPNOff"),
    start("_powerStage: %lld notify->powerRef %llx taking back the power notification for off, powerRef %llx", a2, a3, a4),
    end("End - taken back: %s _powerStage: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "off has already reached stage: %lld, has to come up again", a2),

    event(0x0524AC64, "AcknowledgeSleepWakeNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx acknowledging %s", a2, a3, either(a4, "wake", "sleep")),
    end("End - acknowledged %d.%03d.%03d.%03d after the notification, result: 0x%08x", nanos(a2), lo(a3)),
    sel(0, "powerRef %llx was acknowledged before, expecting powerRef %llx", a2, a3),

    event(0x0524AC68, "ChangePowerStage"),
    start("_powerStage: %lld notify->powerRef %llx newPowerStage: %lld", a2, a3, a4),
    end("End - _powerStage: %lld reached after %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "by way of stage: %lld to newPowerStage: %lld", a2, a3),
    sel(1, "change to stage: %lld in progress, waiting to go to newPowerStage: %lld", a2, a3),
    sel(2, "no way from _powerStage: %lld to newPowerStage: %lld - refused", a2, a3),

    event(0x0524AC6C, "SetPowerStateGated"),
    start("Start - powerStateOrdinal: %lld _powerState: %lld _powerStage: %lld", a2, a3, a4),
    end("End - _powerState: %lld microsecondsUntilComplete: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "_powerState is %lld already - nothing to do", a2),
    sel(1, "powerStateOrdinal: %lld wants newPowerStage: %lld", a2, a3),
    sel(2, "shutting down, powerStateOrdinal: %lld refused", a2),

    event(0x0524AC70, "EnableUpdateTimeStamp"),
    start("Start - enable: %s streamID: %lld _updateInterval: %d.%03d.%03d.%03d", boolean(a2), a3, nanos(a4)),
    end("End - enabled: %s users of the time stamp: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "clock not running in stage: %lld, first time stamp put off", a2),
    sel(1, "first time stamp - sample: %lld at %d.%03d.%03d.%03d", a2, nanos(a3)),
};

}  // namespace

constexpr Decoder kEmbeddedAudio = decoder<kEmbeddedAudioRows, "OrvelEmbeddedAudio">(audioClass(43), 29);

}  // namespace sonaprobe::decoders
