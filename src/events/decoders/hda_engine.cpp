// The high-definition audio engine (class 22): starting and stopping its DMA stream, choosing the
// path set, its controls, formats, power states and time stamps.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kEngineRows[] = {
    event(0x05245820, "stop"),
    start("Start - provider: %p state: %lld fIsRunning: %s", a2, a3, boolean(a4)),
    end("End - provider: %p userClients: %lld", a2, a3),

    event(0x05245828, "initHardware"),
    start("Start - provider: %p fPathSets: %p count: %lld", a2, a3, a4),
    end("End - stream: %p formats: %lld returning %s", a2, a3, named("returning", boolean(a4))),
    sel(0, "index: %d pathSet: %p formats: %d", lo(a2), a3, hi(a4)),
    sel(1, "ERROR: no shared format - stream: %p", a2),

    event(0x0524582C, "stopHardware"),
    start("Start - stream: %p pathSet: %p fIsRunning: %s", a2, a3, boolean(a4)),
    end("End - pathSet: %p result: 0x%08x", a2, lo(a3)),
    sel(0, "disabling - pathSet: %p streamTag: %lld", a2, a3),

    event(0x05245850, "performAudioEngineStop"),
    start("Start - fIsRunning: %s", boolean(a2)),
    end("End - fIsRunning: %s result: 0x%08x", boolean(a2), lo(a3)),
    sel(0, "already stopped - state: %lld forcedPause: %s", a2, boolean(a3)),

    event(0x05245854, "startDMAEngine"),
    start("Start - stream: %p SDFMT: 0x%04x SDCBL: %d", a2, lo(a3), lo(a4)),
    end("End - stream: %p SDCTL: 0x%06x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "first timeStamp: %d.%03d.%03d.%03d SDLPIB: %lld", nanos(a2), a3),
    sel(1, "ERROR: FIFO not ready - SDSTS: 0x%02x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x05245858, "stopDMAEngine"),
    start("Start - stream: %p SDCTL: 0x%06x SDLPIB: %d", a2, lo(a3), lo(a4)),
    end("End - stream: %p elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "ERROR: stream errors - FIFOE: %lld DESE: %lld", a2, a3),
    sel(1, "ERROR: run bit still set - SDCTL: 0x%06x SDSTS: 0x%02x", lo(a2), lo(a3)),

    event(0x0524585C, "controllerForcedPause"),
    start("Start - state: %lld fIsRunning: %s resumeLater: %s", a2, boolean(a3), boolean(a4)),
    end("End - state: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "pausing - SDLPIB: %lld sample: %llu", a2, a3),

    event(0x052458A0, "getHighestPriorityConnectedPathSet"),
    start("Start - fPathSets: %p count: %lld fCurrentPathSet: %p", a2, a3, a4),
    end("End - pathSet: %p priority: %lld changed: %s", a2, a3, boolean(a4)),
    sel(0, "connected - pathSet: %p priority: %lld", a2, a3),
    sel(1, "none connected - pathSet: %p", a2),
    sel(2, "not connected - pathSet: %p priority: %lld", a2, a3),

    event(0x052458E8, "broadcastVolumeToControlsWithBinding"),
    start("Start - binding: 0x%08x channelID: %d volume(steps): %d", lo(a2), lo(a3), lo(a4)),
    end("End - binding: 0x%08x controls: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "control: %p volume(steps): %d -> %d", a2, hi(a3), named("new volume", lo(a3))),
    sel(1, "limited - control: %p volume(steps): %d -> %d", a2, hi(a3), named("new volume", lo(a3))),

    event(0x05245908, "broadcastMuteToControlsWithBinding"),
    start("Start - binding: 0x%08x channelID: %d mute: %s", lo(a2), lo(a3), boolean(a4)),
    end("End - binding: 0x%08x muted: %d unmuted: %d result: 0x%08x", lo(a2), hi(a3), lo(a3), lo(a4)),
    sel(0, "control: %p mute: %s", a2, boolean(a3)),
    sel(1, "staying muted - control: %p pathSet: %p", a2, a3),

    event(0x05245968, "warmLineInput"),
    start("Start - pathSet: %p state: %lld timeout: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - pathSet: %p state: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "turning pathSet: %p to state: %lld", named("pathSet", a2), named("state", a3)),

    event(0x0524596C, "handlePowerStateChange"),
    start("Start - oldPowerState: %lld newPowerState: %lld state: %lld", a2, a3, a4),
    end("End - fPowerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "no change - fPowerState: %lld state: %lld", a2, a3),

    event(0x05245974, "setPowerStateToActive"),
    start("Start - fPowerState: %lld pathSet: %p resumeOnWake: %s", a2, a3, boolean(a4)),
    end("End - fPowerState: %lld fIsRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "restoring - pathSet: %p sampleRate: %d bitsPerSample: %d", a2, hi(a3), lo(a3)),
    sel(1, "resuming stream - sample: %llu", a2),

    event(0x05245978, "setPowerStateToIdle"),
    start("Start - fPowerState: %lld pathSet: %p fIsRunning: %s", a2, a3, boolean(a4)),
    end("End - fPowerState: %lld pathSet: %p result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "running - pathSet: %p powerState: %lld", a2, a3),
    sel(1, "not running - pathSet: %p powerState: %lld", a2, a3),

    event(0x0524597C, "setPowerStateToSleep"),
    start("Start - fPowerState: %lld state: %lld fIsRunning: %s", a2, a3, boolean(a4)),
    end("End - fPowerState: %lld resumeOnWake: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "pausing - SDLPIB: %lld sample: %llu", a2, a3),
    sel(1, "disabling - pathSet: %p", a2),

    event(0x052459E4, "replaceAvailableFormats"),
    start("Start - stream: %p formats: %lld pathSet: %p", a2, a3, a4),
    end("End - stream: %p formats: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "sampleRate: %d bitsPerSample: %d channelCount: %d sampleFormat: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(1, "current format removed - sampleRate: %d bitsPerSample: %d channelCount: %d", hi(a2), lo(a2), lo(a3)),

    // Instants, not spans: one text whatever the qualifier, tab-separated for a spreadsheet.
    event(0x05245A4C, "Start Timestamp"),
    any("raw\t%llu\tcorrected\t%llu\tsamples\t%llu", named("raw", a2), named("corrected", a3), named("samples", a4)),

    event(0x05245A50, "Interrupt Timestamp"),
    any("raw\t%llu\tcorrected\t%llu\tsamples\t%llu", named("raw", a2), named("corrected", a3), named("samples", a4)),
};

}  // namespace

constexpr Decoder kHdaEngine = decoder<kEngineRows, "OrvelHDAEngine">(audioClass(22), 18);

}  // namespace sonaprobe::decoders
