// The embedded headset codecs (classes 45 and 47): serial ports, clocks and inputs of the codec,
// its audio bus, power and references, sidetone, noise cancelling, switches, mutes and volumes.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// The texts of this driver have no blank after a field's colon. ASP is the codec's audio serial
// port, XSP its auxiliary one; a method's second, third and fourth code are its further steps.
constexpr Entry kZ47Rows[] = {
    event(0x0524B400, "ConfigureXSPClocks"),
    start("Start - xspEnabled:%lld sampleRate:%lld bitDepth:%lld", a2, a3, a4),
    end("End - mclkRate:%lld sclkRate:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "clocks already run for the other direction - sampleRate:%lld enabledDirections:0x%llx", a2, a3),
    sel(1, "ERROR: no clock setting for sampleRate:%lld from mclkRate:%lld", a2, a3),

    event(0x0524B404, "ConfigureXSPClocks2"),
    start("Start - programming dividers - clockMaster:%s mclkDivider:%lld sclksPerFrame:%lld", boolean(a2), a3, a4),
    end("End - clockControl:0x%02llx readBack:0x%02llx returnCode:%lld", a2, a3, a4),
    sel(0, "frame sync high for sclks:%lld of sclksPerFrame:%lld", a2, a3),

    event(0x0524B408, "ConfigureXSPClocks3"),
    start("Start - powering up XSP - powerControl:0x%02llx lockTimeout:%d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - xspLocked:%s waited:%d.%03d.%03d.%03d returnCode:%lld", boolean(a2), nanos(a3), a4),
    sel(0, "frame sync not locked yet - lockStatus:0x%02llx retriesLeft:%lld", a2, a3),

    event(0x0524B40C, "ConfigureXSPOutputs"),
    start("Start - xspEnabled:%lld channelCount:%lld channelOffset:%lld", a2, a3, a4),
    end("End - outputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "muting headphone DACs while their slots move - dacMask:0x%llx", a2),
    sel(1, "XSP slot:%lld feeds dac:%lld", a2, a3),

    event(0x0524B410, "ConfigureASPInputs"),
    start("Start - aspEnabled:%lld enableDirection:%lld channelOffset:%lld", a2, a3, a4),
    under("ConfigureXSPClocks", end("End - returnCode:%lld", a2)),  // traced under the clocks' name
    sel(0, "ASP already enabled in this direction - enabledDirections:0x%llx channelOffset:%lld", a2, a3),

    event(0x0524B414, "ConfigureASPInputs2"),
    start("Start - placing inputs on slots - channelCount:%lld bitDepth:%lld aspInputSlotMask:0x%llx", a2, a3, a4),
    end("End - aspInputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "adc:%lld feeds ASP slot:%lld", a2, a3),
    sel(1, "ERROR: ASP slot:%lld already taken by adc:%lld", a2, a3),

    event(0x0524B418, "ConfigureASPInputs3"),
    start("Start - matching rates - aspSampleRate:%lld adcSampleRate:%lld useRateConverter:%s", a2, a3, boolean(a4)),
    end("End - rateConverterLocked:%s rateConverterStatus:0x%02llx returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "rate converter bypassed - both sides at sampleRate:%lld", a2),

    event(0x0524B41C, "ConfigureASPInputs4"),
    start("Start - powering up ASP transmitter - powerControl:0x%02llx inputCount:%lld", a2, a3),
    end("End - powerControl:0x%02llx inputCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "ASP transmitter already up - inputCount:%lld", a2),
    sel(1, "unmuting inputs after waiting:%d.%03d.%03d.%03d for the ADCs to settle - adcMask:0x%llx", nanos(a2), a3),

    event(0x0524B420, "ConfigureDisabledXSP"),
    start("Start - xspEnabled:%lld disableDirection:%lld channelOffset:%lld", a2, a3, a4),
    end("End - xspEnabled:%lld returnCode:%lld", a2, a3),
    sel(0, "other direction still runs - keeping XSP clocks for enabledDirections:0x%llx", a2),

    event(0x0524B424, "ConfigureDisableXSP2"),  // Disable from here on, Disabled in the first step
    start("Start - ramping down headphone DACs - dacMask:0x%llx rampTime:%d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - rampDone:%s rampStatus:0x%02llx returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "ramp not done yet - dacMask:0x%llx rampStatus:0x%02llx", a2, a3),

    event(0x0524B428, "ConfigureDisableXSP3"),
    start("Start - powering down XSP - powerControl:0x%02llx clockControl:0x%02llx", a2, a3),
    end("End - powerControl:0x%02llx clockControl:0x%02llx returnCode:%lld", a2, a3, a4),
    sel(0, "ERROR: XSP does not let go of its clocks - lockStatus:0x%02llx waited:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B42C, "ConfigureDisabledXSPInputs"),
    start("Start - disableDirection:%lld channelCount:%lld channelOffset:%lld", a2, a3, a4),
    end("End - xspInputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "adc:%lld gives up XSP slot:%lld", a2, a3),

    event(0x0524B430, "ConfigureDisableXSPInputs2"),  // the same change of name
    start("Start - closing gaps - remainingInputs:%lld xspInputSlotMask:0x%llx", a2, a3),
    end("End - movedInputs:%lld xspInputSlotMask:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "adc:%lld moves from XSP slot:%d to slot:%d", a2, hi(a3), lo(a3)),

    event(0x0524B434, "ConfigureDisableXSPInputs3"),
    start("Start - powering down unused ADCs - adcMask:0x%llx remainingInputs:%lld", a2, a3),
    end("End - adcPowerControl:0x%02llx returnCode:%lld", a2, a3),
    sel(0, "adc:%lld stays up - still sent on ASP slot:%lld", a2, a3),

    event(0x0524B438, "MatchDisabledXSPInputs"),
    start("Start - disabledSlotMask:0x%llx activeInputMask:0x%llx", a2, a3),
    end("End - matchedInputMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "input:%lld owns disabled slots - slotMask:0x%llx", a2, a3),
    sel(1, "no active input owns disabledSlotMask:0x%llx", a2),

    event(0x0524B43C, "MatchDisabledXSPInputs2"),
    start("Start - looking for stereo partners - matchedInputMask:0x%llx unmatchedSlotMask:0x%llx", a2, a3),
    end("End - matchedInputMask:0x%llx unmatchedSlotMask:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "input:%lld goes with its partner:%lld", a2, a3),
    sel(1, "input:%lld kept - its partner:%lld is still active", a2, a3),

    event(0x0524B440, "ConfigureXSPInputs"),
    start("Start - xspEnabled:%lld enableDirection:%lld channelOffset:%lld", a2, a3, a4),
    end("End - xspInputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "adc:%lld feeds XSP slot:%lld", a2, a3),
    sel(1, "ERROR: no XSP slot left for adc:%lld - xspInputSlotMask:0x%llx", a2, a3),

    event(0x0524B444, "PrepareCodecForAudio"),
    start("Start - _codecPrepared:%s _powerStage:%lld _referenceCount:%lld", boolean(a2), a3, a4),
    end("End - _codecPrepared:%s took:%d.%03d.%03d.%03d returnCode:%lld", boolean(a2), nanos(a3), a4),
    sel(0, "codec lost power - restoring cached registers:%lld", a2),
    sel(1, "waiting for oscillator - clockStatus:0x%02llx waited:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B448, "PrepareCodecForSleep"),
    start("Start - jackDetectEnabled:%s wakeMask:0x%llx _referenceCount:%lld", boolean(a2), a3, a4),
    end("End - powerControl:0x%02llx wakeMask:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "audio still runs - not sleeping, _referenceCount:%lld enabledDirections:0x%llx", a2, a3),
    sel(1, "micbias in low power for button wake - micbiasControl:0x%02llx", a2),

    event(0x0524B44C, "DisableAudioBus"),
    start("Start - bus:%lld _busEnableCount:%lld", a2, a3),
    end("End - bus:%lld busRunning:%s returnCode:%lld", a2, boolean(a3), a4),
    sel(0, "bus:%lld keeps running for enabledDirections:0x%llx", a2, a3),
    sel(1, "bus:%lld stopped - transport drained after:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B450, "EnableAudioBus"),
    start("Start - bus:%lld sampleRate:%lld _busEnableCount:%lld", a2, a3, a4),
    end("End - bus:%lld _busEnableCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "bus:%lld already runs at sampleRate:%lld", a2, a3),
    sel(1, "ERROR: no clocks on bus:%lld after:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B454, "EnableAudioHW"),
    start("Start - flags:0x%llx _hwEnabled:%s _powerStage:%lld", a2, boolean(a3), a4),
    end("End - _hwEnabled:%s took:%d.%03d.%03d.%03d returnCode:%lld", boolean(a2), nanos(a3), a4),
    sel(0, "reset line released - waiting:%d.%03d.%03d.%03d for codec to boot", nanos(a2)),
    sel(1, "ERROR: codec answers deviceID:0x%llx, expected:0x%llx", a2, a3),

    event(0x0524B458, "DigitalCoreError"),
    any("digital core stopped - errorStatus:0x%02llx errorCount:%lld enabledDirections:0x%llx", a2, a3, a4),

    event(0x0524B45C, "DigitalCoreError"),  // the recovery after the code above
    start("Start - restarting digital core - attempt:%lld sinceLastError:%d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - digitalCoreRunning:%s attempts:%lld returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "giving up on digital core - attempts:%lld errorStatus:0x%02llx", a2, a3),

    event(0x0524B460, "DisableAudioHW"),
    start("Start - flags:0x%llx _hwEnabled:%s _referenceCount:%lld", a2, boolean(a3), a4),
    end("End - _hwEnabled:%s powerControl:0x%02llx returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "jack detection needs the codec - leaving supplies on, wakeMask:0x%llx", a2),

    event(0x0524B464, "ReduceReferenceCount"),
    start("Start - giving back client:%lld clientCount:%lld _referenceCount:%lld", a2, a3, a4),
    end("End - _referenceCount:%lld powerDownPending:%s returnCode:%lld", a2, boolean(a3), a4),
    sel(0, "last reference gone - powering down in:%d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: client:%lld gives back more than it took, clientCount:%lld", a2, a3),

    event(0x0524B468, "IncreaseReferenceCount"),
    start("Start - taking client:%lld _referenceCount:%lld powerDownPending:%s", a2, a3, boolean(a4)),
    end("End - _referenceCount:%lld _powerStage:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "first reference by client:%lld - powering up codec from _powerStage:%lld", a2, a3),
    sel(1, "pending power down cancelled by client:%lld with:%d.%03d.%03d.%03d to go", a2, nanos(a3)),

    event(0x0524B46C, "MicbiasStatus"),
    any("micbiasStatus:0x%02llx micbiasUp:%s overCurrent:%s", a2, boolean(a3), boolean(a4)),

    event(0x0524B470, "ConfigureCodecInputs"),
    start("Start - enable:%s inputMask:0x%llx activeInputMask:0x%llx", boolean(a2), a3, a4),
    end("End - activeInputMask:0x%llx returnCode:%lld", a2, a3),
    other("CodecInputs:%c%c%c%c EnableCount:%lld", fourCC(a2), a3),

    event(0x0524B474, "ConfigureCodecInputs2"),
    start("Start - setting up analog path - CodecInputs:%c%c%c%c adc:%lld preampGain:%lld", fourCC(a2), a3, a4),
    end("End - CodecInputs:%c%c%c%c adcPowerControl:0x%02llx returnCode:%lld", fourCC(a2), a3, a4),
    sel(0, "CodecInputs:%c%c%c%c waits:%d.%03d.%03d.%03d for micbias to settle", fourCC(a2), nanos(a3)),
    sel(1, "CodecInputs:%c%c%c%c is digital - clocking dmic at rate:%lld", fourCC(a2), a3),

    event(0x0524B478, "ConfigureSidetone"),
    start("Start - enable:%s sidetoneSource:%lld sidetoneGain:%lld", boolean(a2), a3, a4),
    end("End - sidetoneEnabled:%s returnCode:%lld", boolean(a2), a3),
    sel(0, "no headset microphone among activeInputMask:0x%llx - sidetone stays off", a2),

    event(0x0524B47C, "ConfigureSidetone2"),
    start("Start - loading sidetone filter - coefficientSet:%lld coefficientCount:%lld sampleRate:%lld", a2, a3, a4),
    end("End - coefficientsWritten:%lld sidetoneControl:0x%02llx returnCode:%lld", a2, a3, a4),
    sel(0, "ramping sidetoneGain:%lld to:%lld", a2, a3),

    event(0x0524B480, "ConfigureLPADC"),
    start("Start - enable:%s lpadcChannel:%lld lpadcRate:%lld", boolean(a2), a3, a4),
    end("End - lpadcEnabled:%s lpadcControl:0x%02llx returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "lpadcChannel:%lld still watches buttons - LPADC stays on", a2),

    event(0x0524B484, "ConfigureLPADC2"),
    start("Start - calibrating - lpadcChannel:%lld offsetTrim:%lld", a2, a3),
    end("End - offsetTrim:%lld reference:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "lpadcChannel:%lld offset:%lld still too large - passes:%d", a2, a3, hi(a4)),

    event(0x0524B488, "ConfigureLPADC3"),
    start("Start - arming thresholds - pressLevel:%lld releaseLevel:%lld debounce:%d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - thresholdsArmed:%s firstReading:%lld returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "firstReading:%lld already below pressLevel:%lld - button held while arming", a2, a3),

    event(0x0524B48C, "ConfigurePimletBus"),
    start("Start - enable:%s headsetType:%lld sampleRate:%lld", boolean(a2), a3, a4),
    end("End - busLocked:%s returnCode:%lld", boolean(a2), a3),
    sel(0, "headset microphone line switched from audio to bus - hsSwitch:0x%02llx", a2),
    sel(1, "bus not locked - micbiasStatus:0x%02llx waited:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B490, "EnableANCBlock"),
    start("Start - enable:%s coefficientSet:%lld sampleRate:%lld", boolean(a2), a3, a4),
    end("End - ancEnabled:%s ancControl:0x%02llx returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "reference microphones not running - activeInputMask:0x%llx, needed:0x%llx", a2, a3),

    event(0x0524B494, "ANCInterruptAction"),
    start("Start - ancInterruptStatus:0x%02llx ancInterruptMask:0x%02llx", a2, a3),
    end("End - ancEnabled:%s ancInterruptMask:0x%02llx", boolean(a2), a3),
    sel(0, "overload - leftLevel:%lld rightLevel:%lld, fading noise cancelling out", a2, a3),
    sel(1, "levels back to normal after:%d.%03d.%03d.%03d, fading noise cancelling in", nanos(a2)),
    sel(2, "nothing pending - ancInterruptStatus:0x%02llx spuriousCount:%lld", a2, a3),

    event(0x0524B498, "EnableAudioInput"),
    start("Start - enable:%s dataSource:%c%c%c%c sampleRate:%lld", boolean(a2), fourCC(a3), a4),
    end("End - activeInputMask:0x%llx enabledDirections:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "discarding first samples for:%d.%03d.%03d.%03d while ADC filters settle", nanos(a2)),

    event(0x0524B49C, "EnableAudioOutput"),
    start("Start - enable:%s dataSource:%c%c%c%c dacMask:0x%llx", boolean(a2), fourCC(a3), a4),
    end("End - dacMask:0x%llx enabledDirections:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "waiting for headphone charge pump - pumpStatus:0x%02llx waited:%d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "headphone short - amplifier stays off, shortStatus:0x%02llx", a2),

    event(0x0524B4A0, "SetSampleRate"),
    start("Start - sampleRate:%lld currentSampleRate:%lld enabledDirections:0x%llx", a2, a3, a4),
    end("End - currentSampleRate:%lld returnCode:%lld", a2, a3),
    sel(0, "stopping bus:%lld to change rate - muted dacMask:0x%llx", a2, a3),
    sel(1, "ERROR: sampleRate:%lld not among supportedRates:0x%llx", a2, a3),

    event(0x0524B4A4, "SecondaryActiveChange"),
    start("Start - secondaryActive:%s dataSource:%c%c%c%c _powerStage:%lld", boolean(a2), fourCC(a3), a4),
    end("End - _powerStage:%lld _referenceCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "primary still runs - sharing bus:%lld at sampleRate:%lld", a2, a3),

    event(0x0524B4A8, "SetControl"),
    start("Start - control:%c%c%c%c value:%lld oldValue:%lld", fourCC(a2), a3, a4),
    end("End - control:%c%c%c%c value:%lld returnCode:%lld", fourCC(a2), a3, a4),
    sel(0, "hardware off - control:%c%c%c%c value:%lld kept for the next enable", fourCC(a2), a3),
    sel(1, "control:%c%c%c%c not handled by this codec", fourCC(a2)),

    event(0x0524B4AC, "SetMultiControl"),
    start("Start - controlCount:%lld", a2),
    end("End - controlsSet:%lld controlCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "control:%c%c%c%c value:%lld index:%d", fourCC(a2), a3, hi(a4)),
    sel(1, "ERROR: control:%c%c%c%c returnCode:%lld index:%d - rest not set", fourCC(a2), a3, hi(a4)),
};

// AOP is the always-on processor, which listens to the digital microphones while the codec is off.
constexpr Entry kZ58Rows[] = {
    event(0x0524BC00, "EnableAudioHW"),
    start("Start - _codecPowered: %s _enableCount: %lld flags: 0x%llx", boolean(a2), a3, a4),
    end("End - _codecPowered: %s _enableCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "already enabled, _enableCount: %lld", a2),
    sel(1, "codec still on, cancelling _powerDownTimer with %d.%03d.%03d.%03d to go", nanos(a2)),

    event(0x0524BC04, "DisableAudioHW"),
    start("Start - _enableCount: %lld inputEnabled: %s outputEnabled: %s", a2, boolean(a3), boolean(a4)),
    end("End - _enableCount: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "other users remain, _enableCount: %lld", a2),
    sel(1, "ERROR: more disables than enables, _enableCount: %lld", a2),

    event(0x0524BC08, "StartTransportComplete"),
    start("Start - %s transport: %p transportResult: 0x%08x", either(a2, "input", "output"), a3, lo(a4)),
    end("End - outputMuted: %s inputMuted: %s result: 0x%08x", boolean(a2), boolean(a3), lo(a4)),
    sel(0, "bus clocks are up, unmuting output in %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "transport started after its stream was disabled, ignoring it, streamID: %lld", a2),

    event(0x0524BC0C, "SetupAudioInput"),
    start("Start - dataSource: %c%c%c%c channelCount: %lld bitDepth: %lld", fourCC(a2), a3, a4),
    end("End - adcMask: 0x%llx slotMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "dmic: %lld on slot: %lld", a2, a3),
    sel(1, "headset microphone on slot: %lld, waiting %d.%03d.%03d.%03d for its bias", a2, nanos(a3)),

    event(0x0524BC10, "SetDMicBclkSwitch"),
    start("Start - dmic bit clock from: %s now: %s rate: %lld", either(a2, "AOP", "codec"), either(a3, "AOP", "codec"), a4),
    end("End - dmic bit clock from: %s result: 0x%08x", either(a2, "AOP", "codec"), lo(a3)),
    sel(0, "holding the switch for %d.%03d.%03d.%03d, the old bit clock must stop low", nanos(a2)),

    event(0x0524BC14, "SetDMicDataSwitch"),
    start("Start - dmic data to: %s now: %s dmicMask: 0x%llx", either(a2, "AOP", "codec"), either(a3, "AOP", "codec"), a4),
    end("End - dmic data to: %s result: 0x%08x", either(a2, "AOP", "codec"), lo(a3)),
    sel(0, "data and bit clock on different sides, muting dmicMask: 0x%llx", a2),

    event(0x0524BC18, "SetAopMclkSwitch"),
    start("Start - MCLK from AOP: %s now: %s mclkRate: %lld", boolean(a2), boolean(a3), a4),
    end("End - MCLK from AOP: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "ERROR: AOP clock not running, keeping the main MCLK, clockStatus: 0x%08x", lo(a2)),

    event(0x0524BC1C, "ConfigureSwitches"),
    start("Start - inputEnabled: %s voiceTriggerArmed: %s dataSource: %c%c%c%c", boolean(a2), boolean(a3), fourCC(a4)),
    end("End - switchState: 0x%02llx result: 0x%08x", a2, lo(a3)),
    sel(0, "switchState: 0x%02llx -> 0x%02llx", a2, a3),
    sel(1, "switchState: 0x%02llx fits already, nothing to move", a2),

    event(0x0524BC20, "EnableWNF"),
    start("Start - wind noise filter enable: %s cornerFrequency: %lld sampleRate: %lld", boolean(a2), a3, a4),
    end("End - wind noise filter enabled: %s filterControl: 0x%02llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "no wind noise filter coefficients for sampleRate: %lld, bypassing", a2),

    event(0x0524BC24, "EnableAudioInput"),
    start("Start - enable: %s dataSource: %c%c%c%c sampleRate: %lld", boolean(a2), fourCC(a3), a4),
    end("End - inputEnabled: %s adcMask: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "handing dmics back to AOP for the voice trigger, dmicMask: 0x%llx", a2),
    sel(1, "input muted for %d.%03d.%03d.%03d while the ADCs settle, adcMask: 0x%llx", nanos(a2), a3),

    event(0x0524BC28, "EnableAudioOutput"),
    start("Start - enable: %s dataSource: %c%c%c%c transportRunning: %s", boolean(a2), fourCC(a3), boolean(a4)),
    end("End - outputEnabled: %s headphoneControl: 0x%02llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "waiting for the transport before unmuting, streamID: %lld", a2),
    sel(1, "headphone amplifier not ready, pumpStatus: 0x%02llx waited: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524BC2C, "SetupAudioOutput"),
    start("Start - dataSource: %c%c%c%c channelCount: %lld bitDepth: %lld", fourCC(a2), a3, a4),
    end("End - dacMask: 0x%llx slotMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "slot: %lld to dac: %lld", a2, a3),
    sel(1, "mono stream, slot: %lld to both headphone DACs", a2),

    event(0x0524BC30, "Ping"),
    start("Start - expectedDeviceID: 0x%llx attemptsLeft: %lld", a2, a3),
    end("End - deviceID: 0x%llx revision: 0x%02llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no answer, busResult: 0x%08x attemptsLeft: %lld", lo(a2), a3),
    sel(1, "ERROR: deviceID: 0x%llx is not the expected 0x%llx", a2, a3),

    event(0x0524BC34, "PowerOnCodec"),
    start("Start - _codecPowered: %s resetHeld: %s _powerOnCount: %lld", boolean(a2), boolean(a3), a4),
    end("End - _codecPowered: %s took: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "supplies up, releasing reset after %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "registers restored from cache: %lld, skipped as volatile: %lld", a2, a3),

    event(0x0524BC38, "PowerOffCodec"),
    start("Start - _codecPowered: %s inputEnabled: %s _enableCount: %lld", boolean(a2), boolean(a3), a4),
    end("End - _codecPowered: %s wasOnFor: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "keeping the detection block alive for the jack, wakeMask: 0x%llx", a2),

    event(0x0524BC3C, "PowerDownAction"),
    start("Start - _powerDownTimer fired, _enableCount: %lld idleFor: %d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - poweredOff: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "enabled again meanwhile, leaving the codec on, _enableCount: %lld", a2),

    event(0x0524BC40, "RequestCodecPowerOff"),
    start("Start - immediately: %s delay: %d.%03d.%03d.%03d _enableCount: %lld", boolean(a2), nanos(a3), a4),
    end("End - _powerDownTimer armed: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "request already pending, %d.%03d.%03d.%03d to go", nanos(a2)),

    event(0x0524BC44, "ConfigureSerialPort"),
    start("Start - sampleRate: %d bitDepth: %d slotCount: %d slotWidth: %d clockMaster: %s", hi(a2), lo(a2), hi(a3), lo(a3), boolean(a4)),
    end("End - portControl: 0x%02llx bclkRate: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "port in use, only its word length can change, bitDepth: %lld -> %lld", a2, a3),

    event(0x0524BC48, "ConfigureIntMclk"),
    start("Start - source: %s mclkRate: %lld sampleRate: %lld", either(a2, "pll", "pin"), a3, a4),
    end("End - mclkDivider: %lld internalMclk: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "waiting for pll lock, pllStatus: 0x%02llx waited: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "ERROR: no divider from mclkRate: %lld for sampleRate: %lld", a2, a3),

    event(0x0524BC4C, "EnableInputMute"),
    start("Start - mute: %s muted: %s adcMask: 0x%llx", boolean(a2), boolean(a3), a4),
    end("End - muted: %s adcMuteControl: 0x%02llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "still settling, unmute deferred by %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC50, "EnableOutputMute"),
    start("Start - mute: %s muted: %s softRamp: %s", boolean(a2), boolean(a3), boolean(a4)),
    end("End - muted: %s dacMuteControl: 0x%02llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "transport not running, staying muted, streamID: %lld", a2),
    sel(1, "soft ramp done after %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC54, "SetInputVolume"),
    start("Start - channel: %lld volume: %lld oldVolume: %lld", a2, a3, a4),
    end("End - channel: %lld preampGain: %d adcGain: %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "volume: %lld out of range, limited to %lld", a2, a3),

    event(0x0524BC58, "SetHeadphoneVolume"),
    start("Start - left: %d right: %d oldLeft: %d oldRight: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    end("End - leftRegister: 0x%02x rightRegister: 0x%02x result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "headset volume limit reached, volume: %lld limited to %lld", a2, a3),
    sel(1, "waiting for zero crossing, volumeStatus: 0x%02llx", a2),

    event(0x0524BC5C, "SetSampleRate"),
    start("Start - sampleRate: %lld _sampleRate: %lld enabledDirections: 0x%llx", a2, a3, a4),
    end("End - _sampleRate: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "other direction runs at _sampleRate: %lld, refusing sampleRate: %lld", a2, a3),
    sel(1, "codec off, sampleRate: %lld kept for the next power on", a2),

    event(0x0524BC60, "CodecInterruptAction"),
    start("Start - interruptStatus: 0x%08x interruptMask: 0x%08x latency: %d.%03d.%03d.%03d", lo(a2), lo(a3), nanos(a4)),
    end("End - handledStatus: 0x%08x interruptMask: 0x%08x", lo(a2), lo(a3)),
    sel(0, "pll lost lock, pllStatus: 0x%02llx, muting output", a2),
    sel(1, "headphone over-current, shortStatus: 0x%02llx", a2),
    sel(2, "passing to the headset remote driver, interruptStatus: 0x%08x", lo(a2)),
    sel(3, "codec is off, interrupt not served, _interruptCount: %lld", a2),

    event(0x0524BC64, "CodecEnablePimletInterrupt"),
    start("Start - enable: %s pimletMask: 0x%08x interruptMask: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    end("End - interruptMask: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "clearing stale status before unmasking, interruptStatus: 0x%08x", lo(a2)),

    event(0x0524BC68, "GetBooleanControlInfo"),
    start("Start - control: %c%c%c%c scope: %c%c%c%c element: %lld", fourCC(a2), fourCC(a3), a4),
    end("End - settable: %s value: %s result: 0x%08x", boolean(a2), boolean(a3), lo(a4)),
    sel(0, "control: %c%c%c%c is not a boolean of this codec", fourCC(a2)),

    event(0x0524BC6C, "SetControl"),
    start("Start - control: %c%c%c%c value: %lld oldValue: %lld", fourCC(a2), a3, a4),
    end("End - control: %c%c%c%c value: %lld result: 0x%08x", fourCC(a2), a3, lo(a4)),
    sel(0, "codec off, control: %c%c%c%c value: %lld kept for the next power on", fourCC(a2), a3),
    sel(1, "control: %c%c%c%c unknown, passing up to superclass", fourCC(a2)),

    event(0x0524BC70, "SetMultiControl"),
    start("Start - controlCount: %lld scope: %c%c%c%c", a2, fourCC(a3)),
    end("End - controlsSet: %lld of %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "control: %c%c%c%c value: %lld index: %d", fourCC(a2), a3, hi(a4)),
    sel(1, "ERROR: control: %c%c%c%c refused: 0x%08x index: %d, rest not set", fourCC(a2), lo(a3), hi(a4)),
};

}  // namespace

constexpr Decoder kEmbeddedAudioZ47 = decoder<kZ47Rows, "OrvelEmbeddedAudioZ47">(audioClass(45), 44);
constexpr Decoder kEmbeddedAudioZ58 = decoder<kZ58Rows, "OrvelEmbeddedAudioZ58">(audioClass(47), 29);

}  // namespace sonaprobe::decoders
