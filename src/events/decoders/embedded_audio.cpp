// The embedded audio controller, which the embedded codecs derive from: who has audio enabled, the
// codecs' registers, and the ladder of power stages (class 43).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// The character after a register's address is the low byte of arg3. A single register access is one
// trace point. The start of a power method tells the stage that it finds and the notification that it
// acts for.
constexpr Entry kEmbeddedAudioRows[] = {
    event(0x0524AC00, "SetAudioEnabled"),
    start("Start - enable: %s _enableCount: %lld _powerStage: %lld", boolean(a2), a3, a4),
    end("End - enable: %s _enableCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "first client - _powerStage: %lld", a2),
    sel(1, "last client - _powerStage: %lld", a2),
    sel(2, "other clients - _enableCount: %lld", a2),

    event(0x0524AC04, "SetAudioEnabledWithFlags"),
    start("Start - flags: 0x%llx _enabledFlags: 0x%llx _powerStage: %lld", a2, a3, a4),
    end("End - _enabledFlags: 0x%llx _powerStage: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "already enabled - flags: 0x%llx", a2),
    sel(1, "calling commandSleep - _powerStage: %lld flags: 0x%llx", a2, a3),
    sel(2, "ERROR: commandSleep timed out - waited: %d.%03d.%03d.%03d _powerStage: %lld", nanos(a2), a3),

    event(0x0524AC08, "SetAudioDisabledWithFlags"),
    start("Start - flags: 0x%llx _enabledFlags: 0x%llx _secondaryFlags: 0x%llx", a2, a3, a4),
    end("End - _enabledFlags: 0x%llx _powerStage: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: unbalanced disable - flags: 0x%llx", a2),
    sel(1, "still in use - _enabledFlags: 0x%llx _secondaryFlags: 0x%llx", a2, a3),
    sel(2, "calling ChangePowerStage - newPowerStage: %lld", a2),

    event(0x0524AC0C, "SecondaryAudioStart"),
    start("Start - secondary: %p _secondaryCount: %lld _powerStage: %lld", a2, a3, a4),
    end("End - _secondaryCount: %lld clocksRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "primary not enabled - _powerStage: %lld", a2),

    event(0x0524AC10, "SecondaryAudioStop"),
    start("Start - secondary: %p _secondaryCount: %lld primaryEnabled: %s", a2, a3, boolean(a4)),
    end("End - secondary: %p _secondaryCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last secondary - _enabledFlags: 0x%llx", a2),
    sel(1, "ERROR: never started - secondary: %p", a2),

    event(0x0524AC14, "SecondaryAudioStartWithFlags"),
    start("Start - secondary: %p flags: 0x%llx _secondaryFlags: 0x%llx", a2, a3, a4),
    end("End - _secondaryFlags: 0x%llx _secondaryCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "fast on needed - flags: 0x%llx _powerStage: %lld", a2, a3),

    event(0x0524AC18, "SecondaryAudioStopWithFlags"),
    start("Start - secondary: %p flags: 0x%llx _secondaryFlags: 0x%llx", a2, a3, a4),
    end("End - _secondaryFlags: 0x%llx _powerStage: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "flags shared - flags: 0x%llx secondary: %p", a2, a3),

    event(0x0524AC1C, "RegisterWrite"),
    other("register: 0x%llx[%c] value: 0x%llx", a2, named("bank", character(byte(0, a3))), a4),

    event(0x0524AC20, "RegisterRead"),
    other("register: 0x%llx[%c] value: 0x%llx", a2, named("bank", character(byte(0, a3))), a4),

    event(0x0524AC24, "RegisterFailure"),  // from the first failed transfer to the outcome of its repetitions
    start("register: 0x%llx[%c] value: 0x%llx", a2, named("bank", character(byte(0, a3))), a4),
    end("End - register: 0x%llx[%c] attempts: %d result: 0x%08x", a2, named("bank", character(byte(0, a3))), hi(a4), lo(a4)),
    other("ERROR: register: 0x%llx[%c] returned: 0x%08x", a2, named("bank", character(byte(0, a3))), lo(a4)),

    event(0x0524AC28, "RegisterWriteMultiple"),
    start("startRegister: 0x%llx[%c]", a2, named("bank", character(byte(0, a3)))),
    end("End - startRegister: 0x%llx[%c] registers written: %d result: 0x%08x", a2, named("bank", character(byte(0, a3))), named("registers written", hi(a4)), lo(a4)),
    other("register: 0x%llx[%c] value: 0x%llx", a2, named("bank", character(byte(0, a3))), a4),

    event(0x0524AC2C, "RegisterReadMultiple"),
    start("startRegister: 0x%llx[%c]", a2, named("bank", character(byte(0, a3)))),
    end("End - startRegister: 0x%llx[%c] registers read: %d result: 0x%08x", a2, named("bank", character(byte(0, a3))), named("registers read", hi(a4)), lo(a4)),
    other("register: 0x%llx[%c] value: 0x%llx", a2, named("bank", character(byte(0, a3))), a4),

    event(0x0524AC30, "PowerNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld powerRef: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "queued - newPowerStage: %lld _pendingNotifications: %lld", a2, a3),
    sel(1, "acknowledging at once - _powerStage: %lld powerRef: 0x%llx", a2, a3),

    event(0x0524AC34, "PriorityPowerNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "cancelling change - newPowerStage: %lld powerRef: 0x%llx", a2, a3),
    sel(1, "first in queue - _pendingNotifications: %lld", a2),

    event(0x0524AC38, "VetoSleepWakeNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - vetoed: %s powerRef: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "secondary audio running - _secondaryFlags: 0x%llx _secondaryCount: %lld", a2, a3),
    sel(1, "sleep already started - _powerStage: %lld", a2),
    sel(2, "audio in use - _enabledFlags: 0x%llx", a2),

    event(0x0524AC3C, "SetPowerStagePSOff"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld codecInReset: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "output not ramped down - _powerStage: %lld", a2),
    sel(1, "audio still enabled - _enabledFlags: 0x%llx", a2),

    event(0x0524AC40, "SetPowerStageEarlyOff"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld clockMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "secondary not stopped - secondary: %p _secondaryFlags: 0x%llx", a2, a3),
    sel(1, "muting - running streams: %lld", a2),

    event(0x0524AC44, "SetPowerStageDesiredSlowOn"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld timeout: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "previous ramp down not finished - _powerStage: %lld", a2),
    sel(1, "ramping up - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524AC48, "SetPowerStageDesiredFastOn"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "shortening slow on - powerRef: 0x%llx timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "skipping ramp - preWarmed: %s", boolean(a2)),

    event(0x0524AC4C, "SetPowerStageOn"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld codecReady: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "calling commandWakeup - waiters: %lld", a2),
    sel(1, "enabling hardware - _enabledFlags: 0x%llx", a2),

    event(0x0524AC50, "SetPowerStageDesiredFastOff"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "muting stream - streamID: %lld frames left: %lld", a2, a3),
    sel(1, "powering off at once - running streams: %lld", a2),

    event(0x0524AC54, "SetPowerStageDesiredSlowOff"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld timerArmed: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "timer already armed - timeout: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "arming timer - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524AC58, "SetPowerStageStartedSlowOff"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "ramp down cancelled - flags: 0x%llx", a2),
    sel(1, "ramping down - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524AC5C, "SetPowerDesiredShutdown"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld closed: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "dropping notifications - _pendingNotifications: %lld powerRef: 0x%llx", a2, a3),
    sel(1, "acknowledge due - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524AC60, "SetPowerCancelPNOff"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - cancelled: %s _powerStage: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "off already reached - _powerStage: %lld", a2),

    event(0x0524AC64, "AcknowledgeSleepWakeNotfication"),  // sic
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - elapsed: %d.%03d.%03d.%03d result: 0x%08x", nanos(a2), lo(a3)),
    sel(0, "already acknowledged - powerRef: 0x%llx expected powerRef: 0x%llx", a2, a3),
    sel(1, "acknowledging - transition: %s", either(a2, "wake", "sleep")),

    event(0x0524AC68, "ChangePowerStage"),
    start("_powerStage: %lld notify->powerRef %llx", a2, named("powerRef", a3)),
    end("End - _powerStage: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "intermediate stage - _powerStage: %lld newPowerStage: %lld", a2, a3),
    sel(1, "waiting for change in progress - _powerStage: %lld newPowerStage: %lld", a2, a3),
    sel(2, "ERROR: change not allowed - _powerStage: %lld newPowerStage: %lld", a2, a3),
    sel(3, "changing - _powerStage: %lld newPowerStage: %lld", a2, a3),

    event(0x0524AC6C, "SetPowerStateGated"),
    start("Start - powerStateOrdinal: %lld _powerState: %lld _powerStage: %lld", a2, a3, a4),
    end("End - _powerState: %lld microsecondsUntilComplete: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no change - _powerState: %lld", a2),
    sel(1, "powerStateOrdinal: %lld newPowerStage: %lld", a2, a3),
    sel(2, "ERROR: shutting down - powerStateOrdinal: %lld", a2),

    event(0x0524AC70, "EnableUpdateTimeStamp"),
    start("Start - enable: %s streamID: %lld _updateInterval: %d.%03d.%03d.%03d", boolean(a2), a3, nanos(a4)),
    end("End - enabled: %s clients: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "clock not running - _powerStage: %lld", a2),
    sel(1, "first timeStamp: %d.%03d.%03d.%03d sample: %llu", nanos(a2), a3),
};

}  // namespace

constexpr Decoder kEmbeddedAudio = decoder<kEmbeddedAudioRows, "OrvelEmbeddedAudio">(audioClass(43), 29);

}  // namespace sonaprobe::decoders
