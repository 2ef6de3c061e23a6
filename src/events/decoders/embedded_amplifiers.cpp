// The embedded speaker amplifiers (classes 49 and 50), two generations that share their methods:
// pre-warm and power states, power-up phases, serial port, channels, speakers and volume.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// _ampState is disabled, pre-warmed (powered, but silent) or enabled. Each amplifier of this
// generation has registers of its own, is clocked by MCLK and boosts its own supply.
constexpr Entry kZ14Rows[] = {
    event(0x0524C400, "EnableHWPreWarm"),
    start("Start - enable: %s _ampState: %lld _preWarmCount: %lld", boolean(a2), a3, a4),
    end("End - _ampState: %lld _preWarmCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "already enabled - _enableCount: %lld", a2),
    sel(1, "other users - _preWarmCount: %lld", a2),

    event(0x0524C404, "EnableAudioHW"),
    start("Start - _ampState: %lld _enableCount: %lld preWarmed: %s", a2, a3, boolean(a4)),
    end("End - _ampState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "cold start - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: amp missing - amp: %lld ampMask: 0x%llx", a2, a3),

    event(0x0524C408, "DisableAudioHW"),
    start("Start - _ampState: %lld _enableCount: %lld _preWarmCount: %lld", a2, a3, a4),
    end("End - _ampState: %lld _enableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "other users - _enableCount: %lld", a2),
    sel(1, "back to pre-warm - _preWarmCount: %lld", a2),

    event(0x0524C40C, "EnableAudioOutput"),
    start("Start - enable: %s channelMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - _enabledChannelMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "muted until transport runs - channelMask: 0x%llx", a2),
    sel(1, "ERROR: fault pending - amp: %lld faultStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C410, "EnableAudioInput"),
    start("Start - enable: %s senseMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - _enabledSenseMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "amp: %lld voltage slot: %d current slot: %d", a2, hi(a3), lo(a3)),
    sel(1, "output off - _ampState: %lld", a2),

    event(0x0524C414, "ConfigureSerialPort"),
    start("Start - sampleRate: %d bitsPerSample: %d slotCount: %d bitsPerSlot: %d mclkRate(Hz): %lld", hi(a2), lo(a2), hi(a3), lo(a3), a4),
    end("End - serialFormat: 0x%08x clockRatio: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "ERROR: no clock ratio - sampleRate: %lld mclkRate(Hz): %lld", a2, a3),
    sel(1, "ERROR: amp not muted - amp: %lld _ampState: %lld", a2, a3),

    event(0x0524C418, "EnableKeepAlive"),
    start("Start - enable: %s interval: %d.%03d.%03d.%03d _ampState: %lld", boolean(a2), nanos(a3), a4),
    end("End - keepAliveRunning: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "dithering to prevent standby - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "idle limit reached - idleIntervals: %lld maxIntervals: %lld", a2, a3),

    event(0x0524C41C, "ConfigureChannel"),
    start("Start - amp: %lld channel: %lld slot: %lld", a2, a3, a4),
    end("End - amp: %lld slotControl: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "slot shared - slot: %lld amp: %lld", a2, a3),
    sel(1, "mixing for single amp - first slot: %lld second slot: %lld", a2, a3),

    event(0x0524C420, "SetChannelEnable"),
    start("Start - channel: %lld enable: %s _enabledChannelMask: 0x%llx", a2, boolean(a3), a4),
    end("End - channel: %lld _enabledChannelMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last channel - _ampState: %lld", a2),

    event(0x0524C424, "EnableMclk"),
    start("Start - enable: %s mclkRate(Hz): %lld _mclkUsers: %lld", boolean(a2), a3, a4),
    end("End - mclkRunning: %s _mclkUsers: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "MCLK started - timeout: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "stopping after amp power-down - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524C428, "Reset"),
    start("Start - useResetLine: %s ampMask: 0x%llx _ampState: %lld", boolean(a2), a3, a4),
    end("End - answeringMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "reset line released - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: no answer after reset - amp: %lld returned: 0x%08x", a2, lo(a3)),

    event(0x0524C42C, "ConfigureSpeaker"),
    start("Start - amp: %lld speakerID: 0x%llx impedance(mOhm): %lld", a2, a3, a4),
    end("End - amp: %lld speakerConfigured: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "amp: %lld boost(mV): %d peakCurrent(mA): %d", a2, hi(a3), lo(a3)),
    sel(1, "unknown speaker - speakerID: 0x%llx amp: %lld", a2, a3),

    event(0x0524C430, "StartTransportComplete"),
    start("Start - transportResult: 0x%08x waited: %d.%03d.%03d.%03d _ampState: %lld", lo(a2), nanos(a3), a4),
    end("End - unmutedMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "already disabled - _enableCount: %lld", a2),

    event(0x0524C434, "SetVolume"),
    start("Start - channel: %lld volume(1/100 dB): %lld -> %lld", a2, a3, named("new volume", a4)),
    end("End - channel: %lld digitalVolume: 0x%02x analogGain: 0x%02x result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "limited by speaker - channel: %lld volume(1/100 dB): %lld", a2, a3),
    sel(1, "kept until power-up - volume(1/100 dB): %lld channel: %lld", a2, a3),

    event(0x0524C438, "AmpPowerUpPhase1"),
    start("Start - amp: %lld PowerCtl1: 0x%08x supply(mV): %lld", a2, lo(a3), a4),
    end("End - amp: %lld supplyStatus: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "waiting for MCLK - amp: %lld clockStatus: 0x%08x", a2, lo(a3)),
    sel(1, "ERROR: supply too low - amp: %lld supplyStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C43C, "AmpPowerUpPhase2"),
    start("Start - amp: %lld PowerCtl2: 0x%08x boost(mV): %lld", a2, lo(a3), a4),
    end("End - amp: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "waiting for boost - amp: %lld boostStatus: 0x%08x pollsLeft: %d", a2, lo(a3), hi(a4)),

    event(0x0524C440, "AmpPowerUpPhase3"),
    start("Start - amp: %lld PowerCtl3: 0x%08x volume(1/100 dB): %lld", a2, lo(a3), a4),
    end("End - amp: %lld faultStatus: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "ramping up - amp: %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: output stage shut down - amp: %lld faultStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C444, "SetPreWarmPowerCtl1"),
    start("Start - amp: %lld PowerCtl1: 0x%08x -> 0x%08x", a2, lo(a3), named("new PowerCtl1", lo(a4))),
    end("End - amp: %lld PowerCtl1: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "already pre-warmed - amp: %lld PowerCtl1: 0x%08x", a2, lo(a3)),

    event(0x0524C448, "DisabledToPreWarm"),
    start("Start - ampMask: 0x%llx elapsed: %d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - _ampState: %lld preWarmedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "restoring after power loss - amp: %lld", a2),

    event(0x0524C44C, "DisabledToEnabled"),
    start("Start - ampMask: 0x%llx channelMask: 0x%llx elapsed: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _ampState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "ERROR: power-up failed - phase: %lld amp: %lld", a2, a3),

    event(0x0524C450, "PreWarmToEnabled"),
    start("Start - ampMask: 0x%llx channelMask: 0x%llx elapsed: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _ampState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "pre-warm lost - amp: %lld PowerCtl1: 0x%08x", a2, lo(a3)),

    event(0x0524C454, "PreWarmToDisabled"),
    start("Start - ampMask: 0x%llx elapsed: %d.%03d.%03d.%03d neverUsed: %s", a2, nanos(a3), boolean(a4)),
    end("End - _ampState: %lld _mclkUsers: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "enabled again - _enableCount: %lld", a2),

    event(0x0524C458, "EnabledToPreWarm"),
    start("Start - ampMask: 0x%llx elapsed: %d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - _ampState: %lld preWarmedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "boost converter off - amp: %lld PowerCtl1: 0x%08x", a2, lo(a3)),

    event(0x0524C45C, "EnabledToDsiabled"),  // sic
    start("Start - ampMask: 0x%llx elapsed: %d.%03d.%03d.%03d faultMask: 0x%llx", a2, nanos(a3), a4),
    end("End - _ampState: %lld poweredDownMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: output not ramped down - amp: %lld waited: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C460, "AmpPowerDown"),
    start("Start - amp: %lld PowerCtl1: 0x%08x PowerCtl2: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - amp: %lld powerStatus: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "boost discharging - amp: %lld boostStatus: 0x%08x", a2, lo(a3)),
    sel(1, "ERROR: amp stays powered - amp: %lld powerStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C464, "Notify"),
    sel(1, "EarlyActiveChange"),
    sel(2, "SecondaryActiveChange"),
    sel(3, "SecondaryStreamFormatChange"),
    sel(4, "SecondaryDataSourceChange"),
};

// The amplifiers of this generation have a PLL, fed by the bit clock where MCLK is off. They share
// the boost converter of one of them and are limited by their temperature and by a drooping supply.
constexpr Entry kZ26Rows[] = {
    event(0x0524C800, "EnableHWPreWarm"),
    start("Start - enable: %s _ampState: %lld transportRunning: %s", boolean(a2), a3, boolean(a4)),
    end("End - _ampState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "waiting for transport - _preWarmPending: %s", boolean(a2)),
    sel(1, "no change - _ampState: %lld", a2),

    event(0x0524C804, "EnableAudioHW"),
    start("Start - enabling - _ampState: %lld _enableCount: %lld ampMask: 0x%llx", a2, a3, a4),
    end("End - enabled - _ampState: %lld _enableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "already enabled - _enableCount: %lld", a2),
    sel(1, "ERROR: enabling without amp - amp: %lld faultStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C808, "EnableAudioHW"),  // disabling, traced under the enabling method's name
    start("Start - disabling - _ampState: %lld _enableCount: %lld toPreWarm: %s", a2, a3, boolean(a4)),
    end("End - disabled - _ampState: %lld _enableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "other users - _enableCount: %lld", a2),
    sel(1, "ERROR: unbalanced disable - _ampState: %lld", a2),

    event(0x0524C80C, "EnableAudioOutput"),
    start("Start - output - enable: %s channelMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - output - _enabledChannelMask: 0x%llx mutedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "muted until transport runs - channelMask: 0x%llx", a2),
    sel(1, "thermal limit - amp: %lld attenuation(1/100 dB): %lld", a2, a3),

    event(0x0524C810, "EnableAudioOutput"),  // enabling input, traced under the output's name
    start("Start - input - enable: %s senseMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - input - _enabledSenseMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "voltage - channel: %lld amp: %d bitsPerSample: %d", a2, hi(a3), lo(a3)),
    sel(1, "current - channel: %lld amp: %d bitsPerSample: %d", a2, hi(a3), lo(a3)),

    event(0x0524C814, "ConfigureSerialPort"),
    start("Start - bclkRate(Hz): %d slotCount: %d bitsPerSlot: %d bitsPerSample: %d fsyncInverted: %s", hi(a2), lo(a2), hi(a3), lo(a3), boolean(a4)),
    end("End - rxSlotMask: 0x%llx txSlotMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: slots do not fit - slotCount: %lld bclkRate(Hz): %lld", a2, a3),
    sel(1, "no data to send - amp: %lld txSlotMask: 0x%llx", a2, a3),

    event(0x0524C818, "EnableKeepAlive"),
    start("Start - enable: %s bitClockOnly: %s _keepAliveUsers: %lld", boolean(a2), boolean(a3), a4),
    end("End - keepAliveRunning: %s _keepAliveUsers: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "keeping PLL locked - timeout: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "keep alive ended - elapsed: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524C81C, "ConfigureChannel"),
    start("Start - amp: %lld channel: %lld rxSlot: %lld", a2, a3, a4),
    end("End - amp: %lld rxSlot: %d txSlot: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "amp: %lld channel: %lld crossover(Hz): %d", a2, a3, hi(a4)),

    event(0x0524C820, "SetChannelEnable"),
    start("Start - channel: %lld enable: %s ampMask: 0x%llx", a2, boolean(a3), a4),
    end("End - _enabledChannelMask: 0x%llx mutedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "switching amps together - channel: %lld ampMask: 0x%llx", a2, a3),
    sel(1, "ERROR: no amp - channel: %lld", a2),

    event(0x0524C824, "EnableMclk"),
    start("Start - enable: %s pllSource: %s pllInputRate(Hz): %lld", boolean(a2), either(a3, "MCLK", "bit clock"), a4),
    end("End - pllLocked: %s pllStatus: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "waiting for PLL lock - amp: %lld waited: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: using internal oscillator - amp: %lld pllStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C828, "Reset"),
    start("Start - ampMask: 0x%llx _ampState: %lld _resetCount: %lld", a2, a3, a4),
    end("End - bootedMask: 0x%llx elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld deviceID: 0x%llx revisionID: 0x%x", a2, a3, hi(a4)),
    sel(1, "ERROR: amp did not boot - amp: %lld bootStatus: 0x%08x", a2, lo(a3)),
    sel(2, "trim patch written - amp: %lld registers: %lld", a2, a3),

    event(0x0524C82C, "ConfigureSpeaker"),
    start("Start - amp: %lld speakerVendor: %c%c%c%c calibrated: %s", a2, fourCC(a3), boolean(a4)),
    end("End - amp: %lld maxGain(1/100 dB): %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld dcResistance(mOhm): %d temperatureLimit(C): %d", a2, hi(a3), lo(a3)),
    sel(1, "no calibration - amp: %lld maxGain(1/100 dB): %lld", a2, a3),

    event(0x0524C830, "StartTransportComplete"),
    start("Start - transport: %p transportResult: 0x%08x _ampState: %lld", a2, lo(a3), a4),
    end("End - _ampState: %lld mutedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "doing pending pre-warm - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "unmuting later - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524C834, "SetVolume"),
    start("Start - channel: %lld volume(1/100 dB): %lld rampTime: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - channel: %lld volume(1/100 dB): %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "thermal limit - amp: %lld volume(1/100 dB): %d -> %d", a2, hi(a3), named("new volume", lo(a3))),
    sel(1, "supply droop - attenuation(1/100 dB): %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C838, "AmpPowerUpPhase1"),
    start("Start - ampMask: 0x%llx PowerCtl1: 0x%08x bclkRate(Hz): %lld", a2, lo(a3), a4),
    end("End - lockedMask: 0x%llx waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "waiting for bit clock - amp: %lld pllStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C83C, "AmpPowerUpPhase2"),
    start("Start - amp: %lld boost(mV): %d boostCurrentLimit(mA): %d followerMask: 0x%llx", a2, hi(a3), lo(a3), a4),
    end("End - boostReady: %s boostStatus: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "waiting for boost - waited: %d.%03d.%03d.%03d boost(mV): %lld", nanos(a2), a3),
    sel(1, "ERROR: boost inductor short - amp: %lld boostStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C840, "AmpPowerUpPhase3"),
    start("Start - ampMask: 0x%llx protectionOn: %s", a2, boolean(a3)),
    end("End - playingMask: 0x%llx faultMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld temperature(C): %lld", a2, a3),
    sel(1, "ERROR: output shorted - amp: %lld faultStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C844, "SetPreWarmPowerCtl1"),
    start("Start - ampMask: 0x%llx PowerCtl1: 0x%08x -> 0x%08x", a2, lo(a3), named("new PowerCtl1", lo(a4))),
    end("End - writtenMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "ERROR: writing again - amp: %lld PowerCtl1: 0x%08x", a2, lo(a3)),

    event(0x0524C848, "DisabledToPreWarm"),
    start("Start - ampMask: 0x%llx _resetCount: %lld", a2, a3),
    end("End - _ampState: %lld preWarmedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "waking from hibernation - amp: %lld elapsed: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C84C, "DisabledToEnabled"),
    start("Start - ampMask: 0x%llx sampleRate: %lld", a2, a3),
    end("End - _ampState: %lld playingMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "pre-warm skipped - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: power-up failed - phase: %lld failedMask: 0x%llx", a2, a3),

    event(0x0524C850, "PreWarmToEnabled"),
    start("Start - preWarmedMask: 0x%llx elapsed: %d.%03d.%03d.%03d sampleRate: %lld", a2, nanos(a3), a4),
    end("End - _ampState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "ERROR: PLL lock lost - amp: %lld pllStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C854, "PreWarmToDisabled"),
    start("Start - preWarmedMask: 0x%llx elapsed: %d.%03d.%03d.%03d timedOut: %s", a2, nanos(a3), boolean(a4)),
    end("End - _ampState: %lld hibernatingMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "keeping bit clock - _keepAliveUsers: %lld", a2),

    event(0x0524C858, "EnabledToPreWarm"),
    start("Start - playingMask: 0x%llx elapsed: %d.%03d.%03d.%03d maxTemperature(C): %lld", a2, nanos(a3), a4),
    end("End - _ampState: %lld lockedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "boost off - ampMask: 0x%llx timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C85C, "EnabledToDisabled"),
    start("Start - playingMask: 0x%llx elapsed: %d.%03d.%03d.%03d faultMask: 0x%llx", a2, nanos(a3), a4),
    end("End - _ampState: %lld rampedDownMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: bit clock lost during mute ramp - amp: %lld", a2),

    event(0x0524C860, "AmpPowerDown"),
    start("Start - ampMask: 0x%llx hibernate: %s PowerCtl1: 0x%08x", a2, boolean(a3), lo(a4)),
    end("End - downMask: 0x%llx elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "waiting for followers - amp: %lld followerMask: 0x%llx", a2, a3),
    sel(1, "ERROR: amp stays powered - amp: %lld powerStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C864, "Notify"),
    sel(1, "EarlyActiveChange"),
    sel(2, "SecondaryActiveChange"),
    sel(3, "SecondaryStreamFormatChange"),
    sel(4, "SecondaryDataSourceChange"),

    event(0x0524C868, "SetSampleRate"),
    start("Start - sampleRate: %lld _sampleRate: %lld _ampState: %lld", a2, a3, a4),
    end("End - _sampleRate: %lld bclkRate(Hz): %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "muting for the change - _sampleRate: %lld ampMask: 0x%llx", a2, a3),
    sel(1, "ERROR: no PLL setting - sampleRate: %lld slotCount: %lld", a2, a3),
};

}  // namespace

constexpr Decoder kEmbeddedAudioZ14 = decoder<kZ14Rows, "OrvelEmbeddedAudioZ14">(audioClass(49), 26);
constexpr Decoder kEmbeddedAudioZ26 = decoder<kZ26Rows, "OrvelEmbeddedAudioZ26">(audioClass(50), 27);

}  // namespace sonaprobe::decoders
