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
    start("Start - xspEnabled:%lld sampleRate:%lld bitsPerSample:%lld", a2, a3, a4),
    end("End - mclkRate(Hz):%lld sclkRate(Hz):%lld returnCode:%lld", a2, a3, a4),
    sel(0, "clocks already running - sampleRate:%lld enabledDirections:0x%llx", a2, a3),
    sel(1, "ERROR: no clock setting - sampleRate:%lld mclkRate(Hz):%lld", a2, a3),

    event(0x0524B404, "ConfigureXSPClocks2"),
    start("Start - clockMaster:%s mclkDivider:%lld sclksPerFrame:%lld", boolean(a2), a3, a4),
    end("End - clockControl:0x%08x read clockControl:0x%08x returnCode:%lld", lo(a2), lo(a3), a4),
    sel(0, "frame sync - sclksHigh:%lld sclksPerFrame:%lld", a2, a3),

    event(0x0524B408, "ConfigureXSPClocks3"),
    start("Start - powerControl:0x%08x timeout:%d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    end("End - xspLocked:%s waited:%d.%03d.%03d.%03d returnCode:%lld", boolean(a2), nanos(a3), a4),
    sel(0, "frame sync not locked yet - lockStatus:0x%08x retriesLeft:%lld", lo(a2), a3),

    event(0x0524B40C, "ConfigureXSPOutputs"),
    start("Start - xspEnabled:%lld channelCount:%lld channelOffset:%lld", a2, a3, a4),
    end("End - outputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "muting headphone DACs - dacMask:0x%llx", a2),
    sel(1, "slot:%lld dac:%lld", a2, a3),

    event(0x0524B410, "ConfigureASPInputs"),
    start("Start - aspEnabled:%lld enableDirection:%lld channelOffset:%lld", a2, a3, a4),
    under("ConfigureXSPClocks", end("End - returnCode:%lld", a2)),  // traced under the clocks' name
    sel(0, "ASP already enabled - enabledDirections:0x%llx channelOffset:%lld", a2, a3),

    event(0x0524B414, "ConfigureASPInputs2"),
    start("Start - channelCount:%lld bitsPerSample:%lld aspInputSlotMask:0x%llx", a2, a3, a4),
    end("End - aspInputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "adc:%lld slot:%lld", a2, a3),
    sel(1, "ERROR: ASP slot in use - slot:%lld adc:%lld", a2, a3),

    event(0x0524B418, "ConfigureASPInputs3"),
    start("Start - aspSampleRate:%lld adcSampleRate:%lld useRateConverter:%s", a2, a3, boolean(a4)),
    end("End - rateConverterLocked:%s rateConverterStatus:0x%08x returnCode:%lld", boolean(a2), lo(a3), a4),
    sel(0, "rate converter bypassed - sampleRate:%lld", a2),

    event(0x0524B41C, "ConfigureASPInputs4"),
    start("Start - powerControl:0x%08x inputCount:%lld", lo(a2), a3),
    end("End - powerControl:0x%08x inputCount:%lld returnCode:%lld", lo(a2), a3, a4),
    sel(0, "ASP transmitter already powered - inputCount:%lld", a2),
    sel(1, "unmuting inputs - waited:%d.%03d.%03d.%03d adcMask:0x%llx", nanos(a2), a3),

    event(0x0524B420, "ConfigureDisabledXSP"),
    start("Start - xspEnabled:%lld disableDirection:%lld channelOffset:%lld", a2, a3, a4),
    end("End - xspEnabled:%lld returnCode:%lld", a2, a3),
    sel(0, "keeping XSP clocks - enabledDirections:0x%llx", a2),

    event(0x0524B424, "ConfigureDisableXSP2"),  // Disable from here on, Disabled in the first step
    start("Start - dacMask:0x%llx timeout:%d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - rampDone:%s rampStatus:0x%08x returnCode:%lld", boolean(a2), lo(a3), a4),
    sel(0, "ramp not done yet - dacMask:0x%llx rampStatus:0x%08x", a2, lo(a3)),

    event(0x0524B428, "ConfigureDisableXSP3"),
    start("Start - powerControl:0x%08x clockControl:0x%08x", lo(a2), lo(a3)),
    end("End - powerControl:0x%08x clockControl:0x%08x returnCode:%lld", lo(a2), lo(a3), a4),
    sel(0, "ERROR: XSP clocks still running - lockStatus:0x%08x waited:%d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524B42C, "ConfigureDisabledXSPInputs"),
    start("Start - disableDirection:%lld channelCount:%lld channelOffset:%lld", a2, a3, a4),
    end("End - xspInputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "freeing slot - adc:%lld slot:%lld", a2, a3),

    event(0x0524B430, "ConfigureDisableXSPInputs2"),  // the same change of name
    start("Start - remainingInputs:%lld xspInputSlotMask:0x%llx", a2, a3),
    end("End - movedInputs:%lld xspInputSlotMask:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "adc:%lld slot:%d -> %d", a2, hi(a3), named("new slot", lo(a3))),

    event(0x0524B434, "ConfigureDisableXSPInputs3"),
    start("Start - adcMask:0x%llx remainingInputs:%lld", a2, a3),
    end("End - adcPowerControl:0x%08x returnCode:%lld", lo(a2), a3),
    sel(0, "keeping ADC powered - adc:%lld slot:%lld", a2, a3),

    event(0x0524B438, "MatchDisabledXSPInputs"),
    start("Start - disabledSlotMask:0x%llx activeInputMask:0x%llx", a2, a3),
    end("End - matchedInputMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "matched - input:%lld slotMask:0x%llx", a2, a3),
    sel(1, "no input matched - disabledSlotMask:0x%llx", a2),

    event(0x0524B43C, "MatchDisabledXSPInputs2"),
    start("Start - matchedInputMask:0x%llx unmatchedSlotMask:0x%llx", a2, a3),
    end("End - matchedInputMask:0x%llx unmatchedSlotMask:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "disabled with partner - input:%lld partner:%lld", a2, a3),
    sel(1, "kept for active partner - input:%lld partner:%lld", a2, a3),

    event(0x0524B440, "ConfigureXSPInputs"),
    start("Start - xspEnabled:%lld enableDirection:%lld channelOffset:%lld", a2, a3, a4),
    end("End - xspInputSlotMask:0x%llx returnCode:%lld", a2, a3),
    sel(0, "adc:%lld slot:%lld", a2, a3),
    sel(1, "ERROR: no XSP slot left - adc:%lld xspInputSlotMask:0x%llx", a2, a3),

    event(0x0524B444, "PrepareCodecForAudio"),
    start("Start - _codecPrepared:%s _powerStage:%lld _referenceCount:%lld", boolean(a2), a3, a4),
    end("End - _codecPrepared:%s elapsed:%d.%03d.%03d.%03d returnCode:%lld", boolean(a2), nanos(a3), a4),
    sel(0, "restoring after power loss - registers:%lld", a2),
    sel(1, "waiting for oscillator - clockStatus:0x%08x waited:%d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524B448, "PrepareCodecForSleep"),
    start("Start - jackDetectEnabled:%s wakeMask:0x%llx _referenceCount:%lld", boolean(a2), a3, a4),
    end("End - powerControl:0x%08x wakeMask:0x%llx returnCode:%lld", lo(a2), a3, a4),
    sel(0, "audio running - _referenceCount:%lld enabledDirections:0x%llx", a2, a3),
    sel(1, "mic bias in low power - micbiasControl:0x%08x", lo(a2)),

    event(0x0524B44C, "DisableAudioBus"),
    start("Start - bus:%lld _busEnableCount:%lld", a2, a3),
    end("End - bus:%lld busRunning:%s returnCode:%lld", a2, boolean(a3), a4),
    sel(0, "bus still in use - bus:%lld enabledDirections:0x%llx", a2, a3),
    sel(1, "bus stopped - bus:%lld elapsed:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B450, "EnableAudioBus"),
    start("Start - bus:%lld sampleRate:%lld _busEnableCount:%lld", a2, a3, a4),
    end("End - bus:%lld _busEnableCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "bus already running - bus:%lld sampleRate:%lld", a2, a3),
    sel(1, "ERROR: no clocks - bus:%lld waited:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B454, "EnableAudioHW"),
    start("Start - flags:0x%llx _hwEnabled:%s _powerStage:%lld", a2, boolean(a3), a4),
    end("End - _hwEnabled:%s elapsed:%d.%03d.%03d.%03d returnCode:%lld", boolean(a2), nanos(a3), a4),
    sel(0, "reset line released - timeout:%d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: unexpected device - deviceID:0x%llx expectedDeviceID:0x%llx", a2, a3),

    event(0x0524B458, "DigitalCoreError"),
    other("ERROR: digital core stopped - errorStatus:0x%08x errorCount:%lld enabledDirections:0x%llx", lo(a2), a3, a4),

    event(0x0524B45C, "DigitalCoreError"),  // the recovery after the code above
    start("Start - attempt:%lld elapsed:%d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - digitalCoreRunning:%s attempts:%lld returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "ERROR: digital core stays stopped - attempts:%lld errorStatus:0x%08x", a2, lo(a3)),

    event(0x0524B460, "DisableAudioHW"),
    start("Start - flags:0x%llx _hwEnabled:%s _referenceCount:%lld", a2, boolean(a3), a4),
    end("End - _hwEnabled:%s powerControl:0x%08x returnCode:%lld", boolean(a2), lo(a3), a4),
    sel(0, "keeping power for jack detection - wakeMask:0x%llx", a2),

    event(0x0524B464, "ReduceReferenceCount"),
    start("Start - client:%lld clientCount:%lld _referenceCount:%lld", a2, a3, a4),
    end("End - _referenceCount:%lld powerDownPending:%s returnCode:%lld", a2, boolean(a3), a4),
    sel(0, "last reference - timeout:%d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "ERROR: unbalanced reference - client:%lld clientCount:%lld", a2, a3),

    event(0x0524B468, "IncreaseReferenceCount"),
    start("Start - client:%lld _referenceCount:%lld powerDownPending:%s", a2, a3, boolean(a4)),
    end("End - _referenceCount:%lld _powerStage:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "first reference - client:%lld _powerStage:%lld", a2, a3),
    sel(1, "power down cancelled - client:%lld timeout:%d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524B46C, "MicbiasStatus"),
    other("micbiasStatus:0x%08x micbiasUp:%s overCurrent:%s", lo(a2), boolean(a3), boolean(a4)),

    event(0x0524B470, "ConfigureCodecInputs"),
    start("Start - enable:%s inputMask:0x%llx activeInputMask:0x%llx", boolean(a2), a3, a4),
    end("End - activeInputMask:0x%llx returnCode:%lld", a2, a3),
    other("CodecInputs:%c%c%c%c EnableCount:%lld", fourCC(a2), a3),

    event(0x0524B474, "ConfigureCodecInputs2"),
    start("Start - CodecInputs:%c%c%c%c adc:%lld preampGain(1/100 dB):%lld", fourCC(a2), a3, a4),
    end("End - CodecInputs:%c%c%c%c adcPowerControl:0x%08x returnCode:%lld", fourCC(a2), lo(a3), a4),
    sel(0, "waiting for mic bias - CodecInputs:%c%c%c%c timeout:%d.%03d.%03d.%03d", fourCC(a2), nanos(a3)),
    sel(1, "digital input - CodecInputs:%c%c%c%c dmicRate(Hz):%lld", fourCC(a2), a3),

    event(0x0524B478, "ConfigureSidetone"),
    start("Start - enable:%s sidetoneSource:%lld sidetoneGain(1/100 dB):%lld", boolean(a2), a3, a4),
    end("End - sidetoneEnabled:%s returnCode:%lld", boolean(a2), a3),
    sel(0, "no headset mic - activeInputMask:0x%llx", a2),

    event(0x0524B47C, "ConfigureSidetone2"),
    start("Start - coefficientSet:%lld coefficientCount:%lld sampleRate:%lld", a2, a3, a4),
    end("End - coefficientsWritten:%lld sidetoneControl:0x%08x returnCode:%lld", a2, lo(a3), a4),
    sel(0, "sidetoneGain(1/100 dB):%lld -> %lld", a2, named("new sidetoneGain", a3)),

    event(0x0524B480, "ConfigureLPADC"),
    start("Start - enable:%s lpadcChannel:%lld lpadcRate(Hz):%lld", boolean(a2), a3, a4),
    end("End - lpadcEnabled:%s lpadcControl:0x%08x returnCode:%lld", boolean(a2), lo(a3), a4),
    sel(0, "still used for buttons - lpadcChannel:%lld", a2),

    event(0x0524B484, "ConfigureLPADC2"),
    start("Start - lpadcChannel:%lld offsetTrim:%lld", a2, a3),
    end("End - offsetTrim:%lld reference:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "offset too large - lpadcChannel:%lld offset:%lld passes:%d", a2, a3, hi(a4)),

    event(0x0524B488, "ConfigureLPADC3"),
    start("Start - pressLevel:%lld releaseLevel:%lld buttonDebounce:%d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - thresholdsArmed:%s firstReading:%lld returnCode:%lld", boolean(a2), a3, a4),
    sel(0, "button held while arming - firstReading:%lld pressLevel:%lld", a2, a3),

    event(0x0524B48C, "ConfigurePimletBus"),
    start("Start - enable:%s headsetType:%lld sampleRate:%lld", boolean(a2), a3, a4),
    end("End - busLocked:%s returnCode:%lld", boolean(a2), a3),
    sel(0, "mic line switched to bus - hsSwitch:0x%08x", lo(a2)),
    sel(1, "ERROR: bus not locked - micbiasStatus:0x%08x waited:%d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524B490, "EnableANCBlock"),
    start("Start - enable:%s coefficientSet:%lld sampleRate:%lld", boolean(a2), a3, a4),
    end("End - ancEnabled:%s ancControl:0x%08x returnCode:%lld", boolean(a2), lo(a3), a4),
    sel(0, "ERROR: reference mics not running - activeInputMask:0x%llx neededInputMask:0x%llx", a2, a3),

    event(0x0524B494, "ANCInterruptAction"),
    start("Start - interruptStatus:0x%08x interruptMask:0x%08x", lo(a2), lo(a3)),
    end("End - ancEnabled:%s interruptMask:0x%08x", boolean(a2), lo(a3)),
    sel(0, "overload - leftLevel:%lld rightLevel:%lld", a2, a3),
    sel(1, "overload ended - elapsed:%d.%03d.%03d.%03d", nanos(a2)),
    sel(2, "spurious - interruptStatus:0x%08x spuriousCount:%lld", lo(a2), a3),

    event(0x0524B498, "EnableAudioInput"),
    start("Start - enable:%s dataSource:%c%c%c%c sampleRate:%lld", boolean(a2), fourCC(a3), a4),
    end("End - activeInputMask:0x%llx enabledDirections:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "discarding first samples - timeout:%d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524B49C, "EnableAudioOutput"),
    start("Start - enable:%s dataSource:%c%c%c%c dacMask:0x%llx", boolean(a2), fourCC(a3), a4),
    end("End - dacMask:0x%llx enabledDirections:0x%llx returnCode:%lld", a2, a3, a4),
    sel(0, "waiting for charge pump - pumpStatus:0x%08x waited:%d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "ERROR: headphone short - shortStatus:0x%08x", lo(a2)),

    event(0x0524B4A0, "SetSampleRate"),
    start("Start - sampleRate:%lld currentSampleRate:%lld enabledDirections:0x%llx", a2, a3, a4),
    end("End - currentSampleRate:%lld returnCode:%lld", a2, a3),
    sel(0, "stopping bus - bus:%lld dacMask:0x%llx", a2, a3),
    sel(1, "ERROR: sampleRate not supported - sampleRate:%lld sampleRateMask:0x%llx", a2, a3),

    event(0x0524B4A4, "SecondaryActiveChange"),
    start("Start - secondaryActive:%s dataSource:%c%c%c%c _powerStage:%lld", boolean(a2), fourCC(a3), a4),
    end("End - _powerStage:%lld _referenceCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "bus shared with primary - bus:%lld sampleRate:%lld", a2, a3),

    event(0x0524B4A8, "SetControl"),
    start("Start - control:%c%c%c%c value:%lld oldValue:%lld", fourCC(a2), a3, a4),
    end("End - control:%c%c%c%c value:%lld returnCode:%lld", fourCC(a2), a3, a4),
    sel(0, "kept until power on - control:%c%c%c%c value:%lld", fourCC(a2), a3),
    sel(1, "control not supported - control:%c%c%c%c", fourCC(a2)),

    event(0x0524B4AC, "SetMultiControl"),
    start("Start - controlCount:%lld", a2),
    end("End - controlsSet:%lld controlCount:%lld returnCode:%lld", a2, a3, a4),
    sel(0, "control:%c%c%c%c value:%lld index:%d", fourCC(a2), a3, hi(a4)),
    sel(1, "ERROR: setting control - control:%c%c%c%c returnCode:%lld index:%d", fourCC(a2), a3, hi(a4)),
};

// AOP is the always-on processor, which listens to the digital microphones while the codec is off.
constexpr Entry kZ58Rows[] = {
    event(0x0524BC00, "EnableAudioHW"),
    start("Start - _codecPowered: %s _enableCount: %lld flags: 0x%llx", boolean(a2), a3, a4),
    end("End - _codecPowered: %s _enableCount: %lld result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "already enabled - _enableCount: %lld", a2),
    sel(1, "power down cancelled - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC04, "DisableAudioHW"),
    start("Start - _enableCount: %lld inputEnabled: %s outputEnabled: %s", a2, boolean(a3), boolean(a4)),
    end("End - _enableCount: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "other users - _enableCount: %lld", a2),
    sel(1, "ERROR: unbalanced disable - _enableCount: %lld", a2),

    event(0x0524BC08, "StartTransportComplete"),
    start("Start - direction: %s transport: %p transportResult: 0x%08x", either(a2, "input", "output"), a3, lo(a4)),
    end("End - outputMuted: %s inputMuted: %s result: 0x%08x", boolean(a2), boolean(a3), lo(a4)),
    sel(0, "bus clocks running - timeout: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "stream already disabled - streamID: %lld", a2),

    event(0x0524BC0C, "SetupAudioInput"),
    start("Start - dataSource: %c%c%c%c channelCount: %lld bitsPerSample: %lld", fourCC(a2), a3, a4),
    end("End - adcMask: 0x%llx slotMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "dmic: %lld slot: %lld", a2, a3),
    sel(1, "waiting for mic bias - slot: %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524BC10, "SetDMicBclkSwitch"),
    start("Start - dmicBclk source: %s -> %s dmicRate(Hz): %lld", either(a2, "AOP", "codec"), named("new source", either(a3, "AOP", "codec")), a4),
    end("End - dmicBclk source: %s result: 0x%08x", either(a2, "AOP", "codec"), lo(a3)),
    sel(0, "waiting for bit clock low - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC14, "SetDMicDataSwitch"),
    start("Start - dmicData sink: %s -> %s dmicMask: 0x%llx", either(a2, "AOP", "codec"), named("new sink", either(a3, "AOP", "codec")), a4),
    end("End - dmicData sink: %s result: 0x%08x", either(a2, "AOP", "codec"), lo(a3)),
    sel(0, "muting until switches agree - dmicMask: 0x%llx", a2),

    event(0x0524BC18, "SetAopMclkSwitch"),
    start("Start - useAopMclk: %s -> %s mclkRate(Hz): %lld", boolean(a2), named("new useAopMclk", boolean(a3)), a4),
    end("End - useAopMclk: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "ERROR: AOP clock not running - clockStatus: 0x%08x", lo(a2)),

    event(0x0524BC1C, "ConfigureSwitches"),
    start("Start - inputEnabled: %s voiceTriggerArmed: %s dataSource: %c%c%c%c", boolean(a2), boolean(a3), fourCC(a4)),
    end("End - switchState: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "switchState: 0x%08x -> 0x%08x", lo(a2), named("new switchState", lo(a3))),
    sel(1, "no change - switchState: 0x%08x", lo(a2)),

    event(0x0524BC20, "EnableWNF"),
    start("Start - enable: %s cornerFrequency(Hz): %lld sampleRate: %lld", boolean(a2), a3, a4),
    end("End - enabled: %s filterControl: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "bypassing - sampleRate: %lld", a2),

    event(0x0524BC24, "EnableAudioInput"),
    start("Start - enable: %s dataSource: %c%c%c%c sampleRate: %lld", boolean(a2), fourCC(a3), a4),
    end("End - inputEnabled: %s adcMask: 0x%llx result: 0x%08x", boolean(a2), a3, lo(a4)),
    sel(0, "dmics back to AOP - dmicMask: 0x%llx", a2),
    sel(1, "muted while ADCs settle - timeout: %d.%03d.%03d.%03d adcMask: 0x%llx", nanos(a2), a3),

    event(0x0524BC28, "EnableAudioOutput"),
    start("Start - enable: %s dataSource: %c%c%c%c transportRunning: %s", boolean(a2), fourCC(a3), boolean(a4)),
    end("End - outputEnabled: %s headphoneControl: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "waiting for transport - streamID: %lld", a2),
    sel(1, "waiting for charge pump - pumpStatus: 0x%08x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524BC2C, "SetupAudioOutput"),
    start("Start - dataSource: %c%c%c%c channelCount: %lld bitsPerSample: %lld", fourCC(a2), a3, a4),
    end("End - dacMask: 0x%llx slotMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "slot: %lld dac: %lld", a2, a3),
    sel(1, "mono stream - slot: %lld", a2),

    event(0x0524BC30, "Ping"),
    start("Start - expectedDeviceID: 0x%llx retriesLeft: %lld", a2, a3),
    end("End - deviceID: 0x%llx revisionID: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: no answer - returned: 0x%08x retriesLeft: %lld", lo(a2), a3),
    sel(1, "ERROR: unexpected device - deviceID: 0x%llx expectedDeviceID: 0x%llx", a2, a3),

    event(0x0524BC34, "PowerOnCodec"),
    start("Start - _codecPowered: %s resetHeld: %s _powerOnCount: %lld", boolean(a2), boolean(a3), a4),
    end("End - _codecPowered: %s elapsed: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "supplies on - elapsed: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "registers restored: %lld skipped: %lld", a2, a3),

    event(0x0524BC38, "PowerOffCodec"),
    start("Start - _codecPowered: %s inputEnabled: %s _enableCount: %lld", boolean(a2), boolean(a3), a4),
    end("End - _codecPowered: %s elapsed: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "keeping jack detection - wakeMask: 0x%llx", a2),

    event(0x0524BC3C, "PowerDownAction"),
    start("Start - _enableCount: %lld elapsed: %d.%03d.%03d.%03d", a2, nanos(a3)),
    end("End - poweredOff: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "enabled again - _enableCount: %lld", a2),

    event(0x0524BC40, "RequestCodecPowerOff"),
    start("Start - immediately: %s timeout: %d.%03d.%03d.%03d _enableCount: %lld", boolean(a2), nanos(a3), a4),
    end("End - timerArmed: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "request already pending - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC44, "ConfigureSerialPort"),
    start("Start - sampleRate: %d bitsPerSample: %d slotCount: %d bitsPerSlot: %d clockMaster: %s", hi(a2), lo(a2), hi(a3), lo(a3), boolean(a4)),
    end("End - portControl: 0x%08x bclkRate(Hz): %lld result: 0x%08x", lo(a2), a3, lo(a4)),
    sel(0, "port in use - bitsPerSample: %lld -> %lld", a2, named("new bitsPerSample", a3)),

    event(0x0524BC48, "ConfigureIntMclk"),
    start("Start - mclkSource: %s mclkRate(Hz): %lld sampleRate: %lld", either(a2, "PLL", "pin"), a3, a4),
    end("End - mclkDivider: %lld internalMclk(Hz): %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "waiting for PLL lock - pllStatus: 0x%08x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "ERROR: no divider - mclkRate(Hz): %lld sampleRate: %lld", a2, a3),

    event(0x0524BC4C, "EnableInputMute"),
    start("Start - mute: %s muted: %s adcMask: 0x%llx", boolean(a2), boolean(a3), a4),
    end("End - muted: %s adcMuteControl: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "unmuting later - timeout: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC50, "EnableOutputMute"),
    start("Start - mute: %s muted: %s softRamp: %s", boolean(a2), boolean(a3), boolean(a4)),
    end("End - muted: %s dacMuteControl: 0x%08x result: 0x%08x", boolean(a2), lo(a3), lo(a4)),
    sel(0, "transport not running - streamID: %lld", a2),
    sel(1, "soft ramp done - elapsed: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x0524BC54, "SetInputVolume"),
    start("Start - channel: %lld volume(1/100 dB): %lld -> %lld", a2, a3, named("new volume", a4)),
    end("End - channel: %lld preampGain(1/100 dB): %d adcGain(1/100 dB): %d result: 0x%08x", a2, hi(a3), lo(a3), lo(a4)),
    sel(0, "limited - volume(1/100 dB): %lld -> %lld", a2, named("new volume", a3)),

    event(0x0524BC58, "SetHeadphoneVolume"),
    start("Start - leftVolume(1/100 dB): %d -> %d rightVolume(1/100 dB): %d -> %d", hi(a2), named("new leftVolume", lo(a2)), hi(a3), named("new rightVolume", lo(a3))),
    end("End - leftRegister: 0x%02x rightRegister: 0x%02x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "headset limit - volume(1/100 dB): %lld -> %lld", a2, named("new volume", a3)),
    sel(1, "waiting for zero crossing - volumeStatus: 0x%08x", lo(a2)),

    event(0x0524BC5C, "SetSampleRate"),
    start("Start - sampleRate: %lld _sampleRate: %lld enabledDirections: 0x%llx", a2, a3, a4),
    end("End - _sampleRate: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "ERROR: other direction running - _sampleRate: %lld sampleRate: %lld", a2, a3),
    sel(1, "kept until power on - sampleRate: %lld", a2),

    event(0x0524BC60, "CodecInterruptAction"),
    start("Start - interruptStatus: 0x%08x interruptMask: 0x%08x elapsed: %d.%03d.%03d.%03d", lo(a2), lo(a3), nanos(a4)),
    end("End - handledStatus: 0x%08x interruptMask: 0x%08x", lo(a2), lo(a3)),
    sel(0, "ERROR: PLL lock lost - pllStatus: 0x%08x", lo(a2)),
    sel(1, "ERROR: headphone over current - shortStatus: 0x%08x", lo(a2)),
    sel(2, "passing to headset remote driver - interruptStatus: 0x%08x", lo(a2)),
    sel(3, "codec off - _interruptCount: %lld", a2),

    event(0x0524BC64, "CodecEnablePimletInterrupt"),
    start("Start - enable: %s pimletMask: 0x%llx interruptMask: 0x%08x", boolean(a2), a3, lo(a4)),
    end("End - interruptMask: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "clearing old status - interruptStatus: 0x%08x", lo(a2)),

    event(0x0524BC68, "GetBooleanControlInfo"),
    start("Start - control: %c%c%c%c scope: %c%c%c%c element: %lld", fourCC(a2), fourCC(a3), a4),
    end("End - settable: %s booleanValue: %s result: 0x%08x", boolean(a2), boolean(a3), lo(a4)),
    sel(0, "not a boolean - control: %c%c%c%c", fourCC(a2)),

    event(0x0524BC6C, "SetControl"),
    start("Start - control: %c%c%c%c value: %lld oldValue: %lld", fourCC(a2), a3, a4),
    end("End - control: %c%c%c%c value: %lld result: 0x%08x", fourCC(a2), a3, lo(a4)),
    sel(0, "kept until power on - control: %c%c%c%c value: %lld", fourCC(a2), a3),
    sel(1, "calling up to superclass - control: %c%c%c%c", fourCC(a2)),

    event(0x0524BC70, "SetMultiControl"),
    start("Start - controlCount: %lld scope: %c%c%c%c", a2, fourCC(a3)),
    end("End - controlsSet: %lld controlCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "control: %c%c%c%c value: %lld index: %d", fourCC(a2), a3, hi(a4)),
    sel(1, "ERROR: setting control - control: %c%c%c%c returned: 0x%08x index: %d", fourCC(a2), lo(a3), hi(a4)),
};

}  // namespace

constexpr Decoder kEmbeddedAudioZ47 = decoder<kZ47Rows, "OrvelEmbeddedAudioZ47">(audioClass(45), 44);
constexpr Decoder kEmbeddedAudioZ58 = decoder<kZ58Rows, "OrvelEmbeddedAudioZ58">(audioClass(47), 29);

}  // namespace sonaprobe::decoders
