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
    sel(0, "audio already enabled, nothing to pre-warm, _enableCount: %lld", a2),
    sel(1, "pre-warm kept for other clients, _preWarmCount: %lld", a2),

    event(0x0524C404, "EnableAudioHW"),
    start("Start - _ampState: %lld _enableCount: %lld preWarmed: %s", a2, a3, boolean(a4)),
    end("End - _ampState: %lld took: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "cold start, no pre-warm asked for since %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: amp: %lld missing, going on with ampMask: 0x%llx", a2, a3),

    event(0x0524C408, "DisableAudioHW"),
    start("Start - _ampState: %lld _enableCount: %lld _preWarmCount: %lld", a2, a3, a4),
    end("End - _ampState: %lld _enableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "other clients still play, _enableCount: %lld", a2),
    sel(1, "falling back to pre-warm instead of off, _preWarmCount: %lld", a2),

    event(0x0524C40C, "EnableAudioOutput"),
    start("Start - enable: %s channelMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - _enabledChannelMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "holding amps muted until the transport runs, channelMask: 0x%llx", a2),
    sel(1, "amp: %lld has a latched fault, faultStatus: 0x%02llx, its output stays off", a2, a3),

    event(0x0524C410, "EnableAudioInput"),
    start("Start - enable: %s senseChannelMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - _enabledSenseMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "amp: %lld sends speaker voltage on slot: %d, current on slot: %d", a2, hi(a3), lo(a3)),
    sel(1, "output is off, amps have nothing to sense, _ampState: %lld", a2),

    event(0x0524C414, "ConfigureSerialPort"),
    start("Start - sampleRate: %d bitDepth: %d slotCount: %d slotWidth: %d mclkRate: %lld", hi(a2), lo(a2), hi(a3), lo(a3), a4),
    end("End - serialFormat: 0x%02llx clockRatio: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: no clock ratio for sampleRate: %lld from mclkRate: %lld", a2, a3),
    sel(1, "amp: %lld must be muted to change its serial format, _ampState: %lld", a2, a3),

    event(0x0524C418, "EnableKeepAlive"),
    start("Start - enable: %s interval: %d.%03d.%03d.%03d _ampState: %lld", boolean(a2), nanos(a3), a4),
    end("End - _keepAliveArmed: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "no audio for %d.%03d.%03d.%03d, dithering so that amps do not enter standby", nanos(a2)),
    sel(1, "idle for too long, letting amps go, idleIntervals: %lld of %lld", a2, a3),

    event(0x0524C41C, "ConfigureChannel"),
    start("Start - amp: %lld channel: %lld slot: %lld", a2, a3, a4),
    end("End - amp: %lld slotControl: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "slot: %lld is already played by amp: %lld, both get it", a2, a3),
    sel(1, "only one amp fitted, it plays the mix of slot: %lld and slot: %lld", a2, a3),

    event(0x0524C420, "SetChannelEnable"),
    start("Start - channel: %lld enable: %s _enabledChannelMask: 0x%llx", a2, boolean(a3), a4),
    end("End - channel: %lld _enabledChannelMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last channel gone, amps play silence, _ampState: %lld", a2),

    event(0x0524C424, "EnableMclk"),
    start("Start - enable: %s mclkRate: %lld _mclkUsers: %lld", boolean(a2), a3, a4),
    end("End - mclkRunning: %s _mclkUsers: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "MCLK started, waiting %d.%03d.%03d.%03d for it to settle", nanos(a2)),
    sel(1, "MCLK must outlive the amps' power-down, stopping it in %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524C428, "Reset"),
    start("Start - useResetLine: %s ampMask: 0x%llx _ampState: %lld", boolean(a2), a3, a4),
    end("End - answeringMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "reset line held low for %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: amp: %lld does not answer after reset, busResult: 0x%08x", a2, lo(a3)),

    event(0x0524C42C, "ConfigureSpeaker"),
    start("Start - amp: %lld speakerID: 0x%llx impedance(mOhm): %lld", a2, a3, a4),
    end("End - amp: %lld speakerConfigured: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "amp: %lld boost(mV): %d peakCurrent(mA): %d", a2, hi(a3), lo(a3)),
    sel(1, "speakerID: 0x%llx unknown, amp: %lld gets the safe limits", a2, a3),

    event(0x0524C430, "StartTransportComplete"),
    start("Start - transportResult: 0x%08x waited: %d.%03d.%03d.%03d _ampState: %lld", lo(a2), nanos(a3), a4),
    end("End - unmutedMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "disabled while the transport was starting, staying muted, _enableCount: %lld", a2),

    event(0x0524C434, "SetVolume"),
    start("Start - channel: %lld volume: %lld oldVolume: %lld", a2, a3, a4),
    end("End - channel: %lld digitalVolume: 0x%02x analogGain: 0x%02x result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "channel: %lld volume limited to %lld by its speaker", a2, a3),
    sel(1, "amps off, volume: %lld kept for the next power-up of channel: %lld", a2, a3),

    event(0x0524C438, "AmpPowerUpPhase1"),
    start("Start - waking amp: %lld from standby, PowerCtl1: 0x%02llx supply(mV): %lld", a2, a3, a4),
    end("End - amp: %lld supplyStatus: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld waits for MCLK, clockStatus: 0x%02llx", a2, a3),
    sel(1, "ERROR: amp: %lld supply too low, supplyStatus: 0x%02llx", a2, a3),

    event(0x0524C43C, "AmpPowerUpPhase2"),
    start("Start - boost converter on, amp: %lld PowerCtl2: 0x%02llx boost(mV): %lld", a2, a3, a4),
    end("End - amp: %lld boostReadyAfter: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld boost not up yet, boostStatus: 0x%02llx pollsLeft: %d", a2, a3, hi(a4)),

    event(0x0524C440, "AmpPowerUpPhase3"),
    start("Start - output stage on, amp: %lld PowerCtl3: 0x%02llx volume: %lld", a2, a3, a4),
    end("End - amp: %lld faultStatus: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld ramping up from mute for %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: amp: %lld shut its output stage down, faultStatus: 0x%02llx", a2, a3),

    event(0x0524C444, "SetPreWarmPowerCtl1"),
    start("Start - amp: %lld PowerCtl1: 0x%02llx -> 0x%02llx", a2, a3, a4),
    end("End - amp: %lld PowerCtl1: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld is pre-warmed already, PowerCtl1: 0x%02llx left as it is", a2, a3),

    event(0x0524C448, "DisabledToPreWarm"),
    start("Start - ampMask: 0x%llx offFor: %d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - _ampState: %lld preWarmedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "registers were lost, writing all settings of amp: %lld anew", a2),

    event(0x0524C44C, "DisabledToEnabled"),
    start("Start - ampMask: 0x%llx channelMask: 0x%llx offFor: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _ampState: %lld coldStartTook: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "ERROR: power-up phase: %lld failed on amp: %lld, powering all down", a2, a3),

    event(0x0524C450, "PreWarmToEnabled"),
    start("Start - ampMask: 0x%llx channelMask: 0x%llx preWarmedFor: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - _ampState: %lld warmStartTook: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld fell out of pre-warm, PowerCtl1: 0x%02llx, starting it cold", a2, a3),

    event(0x0524C454, "PreWarmToDisabled"),
    start("Start - ampMask: 0x%llx preWarmedFor: %d.%03d.%03d.%03d neverUsed: %s", a2, nanos(a3), boolean(a4)),
    end("End - _ampState: %lld _mclkUsers: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "enable came in meanwhile, keeping amps warm, _enableCount: %lld", a2),

    event(0x0524C458, "EnabledToPreWarm"),
    start("Start - muting ampMask: 0x%llx playedFor: %d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - _ampState: %lld stillWarmMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "boost converter off, amp: %lld keeps PowerCtl1: 0x%02llx", a2, a3),

    event(0x0524C45C, "EnabledToDsiabled"),  // sic
    start("Start - muting ampMask: 0x%llx playedFor: %d.%03d.%03d.%03d faultMask: 0x%llx", a2, nanos(a3), a4),
    end("End - _ampState: %lld poweredDownMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld not ramped down after %d.%03d.%03d.%03d, cutting it off", a2, nanos(a3)),

    event(0x0524C460, "AmpPowerDown"),
    start("Start - amp: %lld PowerCtl1: 0x%02llx PowerCtl2: 0x%02llx", a2, a3, a4),
    end("End - amp: %lld powerStatus: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld boost discharging, boostStatus: 0x%02llx", a2, a3),
    sel(1, "ERROR: amp: %lld stays powered, powerStatus: 0x%02llx", a2, a3),

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
    end("End - _ampState: %lld took: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "bit clock not there yet, pre-warm waits for the transport, _preWarmPending: %s", boolean(a2)),
    sel(1, "_ampState: %lld is beyond pre-warm, nothing to do", a2),

    event(0x0524C804, "EnableAudioHW"),
    start("Start - enabling, _ampState: %lld _enableCount: %lld ampMask: 0x%llx", a2, a3, a4),
    end("End - enabled, _ampState: %lld _enableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "already enabled, _enableCount: %lld", a2),
    sel(1, "enabling without amp: %lld, it failed its last power-up, faultStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C808, "EnableAudioHW"),  // disabling, traced under the enabling method's name
    start("Start - disabling, _ampState: %lld _enableCount: %lld toPreWarm: %s", a2, a3, boolean(a4)),
    end("End - disabled, _ampState: %lld _enableCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "not disabling, other clients remain, _enableCount: %lld", a2),
    sel(1, "ERROR: disabling more often than enabled, _ampState: %lld", a2),

    event(0x0524C80C, "EnableAudioOutput"),
    start("Start - output enable: %s channelMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - output _enabledChannelMask: 0x%llx mutedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "output starts muted, transport not complete, channelMask: 0x%llx", a2),
    sel(1, "amp: %lld too hot, gain reduced by: %lld", a2, a3),

    event(0x0524C810, "EnableAudioOutput"),  // enabling input, traced under the output's name
    start("Start - input enable: %s senseMask: 0x%llx sampleRate: %lld", boolean(a2), a3, a4),
    end("End - input _enabledSenseMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "input channel: %lld carries amp: %d voltage, bitDepth: %d", a2, hi(a3), lo(a3)),
    sel(1, "input channel: %lld carries amp: %d current, bitDepth: %d", a2, hi(a3), lo(a3)),

    event(0x0524C814, "ConfigureSerialPort"),
    start("Start - bclkRate: %lld slotCount: %d slotWidth: %d bitDepth: %d fsyncInverted: %s", a2, hi(a3), lo(a3), hi(a4), boolean(lo(a4))),
    end("End - rxSlotMask: 0x%08x txSlotMask: 0x%08x result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "ERROR: %lld slots do not fit bclkRate: %lld", a2, a3),
    sel(1, "amp: %lld drives no data on txSlotMask: 0x%08llx", a2, a3),

    event(0x0524C818, "EnableKeepAlive"),
    start("Start - enable: %s bitClockOnly: %s _keepAliveUsers: %lld", boolean(a2), boolean(a3), a4),
    end("End - keepAliveRunning: %s _keepAliveUsers: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "keeping the bit clock alive for %d.%03d.%03d.%03d so that the PLL holds its lock", nanos(a2)),
    sel(1, "keep alive ran out, last audio %d.%03d.%03d.%03d ago", nanos(a2)),

    event(0x0524C81C, "ConfigureChannel"),
    start("Start - amp: %lld channel: %lld rxSlot: %lld", a2, a3, a4),
    end("End - amp: %lld rxSlot: %d txSlot: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "amp: %lld gets its band of channel: %lld, crossover: %d", a2, a3, hi(a4)),

    event(0x0524C820, "SetChannelEnable"),
    start("Start - channel: %lld enable: %s ampMask: 0x%llx", a2, boolean(a3), a4),
    end("End - _enabledChannelMask: 0x%llx mutedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "channel: %lld is played by ampMask: 0x%llx, switching them together", a2, a3),
    sel(1, "ERROR: channel: %lld has no amp", a2),

    event(0x0524C824, "EnableMclk"),
    start("Start - enable: %s pllSource: %s pllInputRate: %lld", boolean(a2), either(a3, "MCLK", "bit clock"), a4),
    end("End - pllLocked: %s pllStatus: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "amp: %lld PLL not locked, waited: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "amp: %lld falls back to its own oscillator, pllStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C828, "Reset"),
    start("Start - soft reset of ampMask: 0x%llx _ampState: %lld _resetCount: %lld", a2, a3, a4),
    end("End - bootedMask: 0x%llx took: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld deviceID: 0x%llx revision: 0x%02x", a2, a3, hi(a4)),
    sel(1, "ERROR: amp: %lld does not finish booting, bootStatus: 0x%08x", a2, lo(a3)),
    sel(2, "amp: %lld trim patch written, registers: %lld", a2, a3),

    event(0x0524C82C, "ConfigureSpeaker"),
    start("Start - amp: %lld speakerVendor: %c%c%c%c calibrated: %s", a2, fourCC(a3), boolean(a4)),
    end("End - amp: %lld maxGain: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld dcResistance(mOhm): %d temperatureLimit: %d", a2, hi(a3), lo(a3)),
    sel(1, "amp: %lld has no calibration, playing at reduced gain: %lld", a2, a3),

    event(0x0524C830, "StartTransportComplete"),
    start("Start - transport: %p transportResult: 0x%08x _ampState: %lld", a2, lo(a3), a4),
    end("End - _ampState: %lld mutedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bit clock is there, doing the pending pre-warm after %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "first frames are not audio, unmuting in %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524C834, "SetVolume"),
    start("Start - channel: %lld volume: %lld rampTime: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - channel: %lld volume: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld in thermal limit, volume: %d limited to %d", a2, hi(a3), lo(a3)),
    sel(1, "supply droop, all amps attenuated by: %lld for %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C838, "AmpPowerUpPhase1"),
    start("Start - starting PLL and references of ampMask: 0x%llx PowerCtl1: 0x%08x bclkRate: %lld", a2, lo(a3), a4),
    end("End - lockedMask: 0x%llx waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld without bit clock, pllStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C83C, "AmpPowerUpPhase2"),
    start("Start - starting shared boost on amp: %lld boost(mV): %d boostCurrentLimit(mA): %d followerMask: 0x%llx", a2, hi(a3), lo(a3), a4),
    end("End - boostReady: %s boostStatus: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "boost still rising after %d.%03d.%03d.%03d, boost(mV): %lld", nanos(a2), a3),
    sel(1, "ERROR: boost inductor short, amp: %lld boostStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C840, "AmpPowerUpPhase3"),
    start("Start - starting output stages of ampMask: 0x%llx protectionOn: %s", a2, boolean(a3)),
    end("End - playingMask: 0x%llx faultMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld temperature: %lld before unmuting", a2, a3),
    sel(1, "ERROR: amp: %lld output shorted, faultStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C844, "SetPreWarmPowerCtl1"),
    start("Start - ampMask: 0x%llx PowerCtl1: 0x%08x -> 0x%08x", a2, lo(a3), lo(a4)),
    end("End - writtenMask: 0x%llx result: 0x%08x", a2, lo(a3)),
    sel(0, "ERROR: amp: %lld reads back PowerCtl1: 0x%08x, writing again", a2, lo(a3)),

    event(0x0524C848, "DisabledToPreWarm"),
    start("Start - ampMask: 0x%llx _resetCount: %lld", a2, a3),
    end("End - _ampState: %lld warmMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amp: %lld was in hibernation for %d.%03d.%03d.%03d, its wake sequence is due", a2, nanos(a3)),

    event(0x0524C84C, "DisabledToEnabled"),
    start("Start - ampMask: 0x%llx sampleRate: %lld", a2, a3),
    end("End - _ampState: %lld playingMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "pre-warm was skipped, first audio is late by %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: phase: %lld failed on failedMask: 0x%llx, going back to disabled", a2, a3),

    event(0x0524C850, "PreWarmToEnabled"),
    start("Start - warmMask: 0x%llx warmFor: %d.%03d.%03d.%03d sampleRate: %lld", a2, nanos(a3), a4),
    end("End - _ampState: %lld unmutedAfter: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld lost PLL lock while warm, relocking, pllStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C854, "PreWarmToDisabled"),
    start("Start - warmMask: 0x%llx warmFor: %d.%03d.%03d.%03d timedOut: %s", a2, nanos(a3), boolean(a4)),
    end("End - _ampState: %lld hibernatingMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "_keepAliveUsers: %lld, bit clock stays on though amps go off", a2),

    event(0x0524C858, "EnabledToPreWarm"),
    start("Start - playingMask: 0x%llx playedFor: %d.%03d.%03d.%03d maxTemperature: %lld", a2, nanos(a3), a4),
    end("End - _ampState: %lld lockedMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "boost off, PLL stays locked on ampMask: 0x%llx, staying warm for at most %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C85C, "EnabledToDisabled"),
    start("Start - playingMask: 0x%llx playedFor: %d.%03d.%03d.%03d faultMask: 0x%llx", a2, nanos(a3), a4),
    end("End - _ampState: %lld rampedDownMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "bit clock stopped before the mute ramp of amp: %lld ended, expect a pop", a2),

    event(0x0524C860, "AmpPowerDown"),
    start("Start - ampMask: 0x%llx hibernate: %s PowerCtl1: 0x%08x", a2, boolean(a3), lo(a4)),
    end("End - downMask: 0x%llx took: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "amp: %lld owns the boost, waiting for followerMask: 0x%llx to stop", a2, a3),
    sel(1, "ERROR: amp: %lld does not report powered down, powerStatus: 0x%08x", a2, lo(a3)),

    event(0x0524C864, "Notify"),
    sel(1, "EarlyActiveChange"),
    sel(2, "SecondaryActiveChange"),
    sel(3, "SecondaryStreamFormatChange"),
    sel(4, "SecondaryDataSourceChange"),

    event(0x0524C868, "SetSampleRate"),
    start("Start - sampleRate: %lld _sampleRate: %lld _ampState: %lld", a2, a3, a4),
    end("End - _sampleRate: %lld bclkRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "amps play at _sampleRate: %lld, muting ampMask: 0x%llx for the change", a2, a3),
    sel(1, "ERROR: no PLL setting for sampleRate: %lld at slotCount: %lld", a2, a3),
};

}  // namespace

constexpr Decoder kEmbeddedAudioZ14 = decoder<kZ14Rows, "OrvelEmbeddedAudioZ14">(audioClass(49), 26);
constexpr Decoder kEmbeddedAudioZ26 = decoder<kZ26Rows, "OrvelEmbeddedAudioZ26">(audioClass(50), 27);

}  // namespace sonaprobe::decoders
