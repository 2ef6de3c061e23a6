// The events that change an engine under its I/O threads.

#include "analysis/engine_changes.h"

#include <algorithm>
#include <array>

namespace sonaprobe {

namespace {

using enum EngineChange;

struct Entry {
    uint32_t code;
    EngineChange change;
};

// In the order of codes. An event stands here where its call takes the engine, its stream or its
// device away from I/O or gives it another format; calls that only change power, volume or what an
// engine offers do not.
constexpr std::array kChanges = std::to_array<Entry>({
    {0x052410DC, pause},        // PlexoEngine::setState
    {0x05241160, pause},        // PlexoEngine::waitForEngineResume: it is paused meanwhile
    {0x0524548C, stop},         // OrvelHDADriver::deactivateAudioEngine
    {0x0524549C, stop},         // OrvelHDADriver::destructExtOutputEngine
    {0x052454BC, pause},        // OrvelHDADriver::protectedPowerChange_sleep pauses all engines
    {0x05245594, stop},         // OrvelHDADriver::protectedTerminateOrvelHDAEngine
    {0x05245598, stop},         // OrvelHDADriver::protectedOrvelHDAEngineStopped
    {0x05245820, stop},         // OrvelHDAEngine::stop
    {0x0524582C, stop},         // OrvelHDAEngine::stopHardware
    {0x05245850, stop},         // OrvelHDAEngine::performAudioEngineStop
    {0x05245858, stop},         // OrvelHDAEngine::stopDMAEngine
    {0x0524585C, pause},        // OrvelHDAEngine::controllerForcedPause
    {0x0524597C, pause},        // OrvelHDAEngine::setPowerStateToSleep pauses for sleep
    {0x052459E4, reconfigure},  // OrvelHDAEngine::replaceAvailableFormats: the present one may go
    {0x05247000, pause},        // OrvelHDAEngineOutputDP::setPowerStateToSleep
    {0x05247008, stop},         // OrvelHDAEngineOutputDP::stopHardware
    {0x0524700C, deviceLost},   // ..._videoWillPowerOff: the display goes
    {0x05247024, reconfigure},  // OrvelHDAEngineOutputDP::performFormatChange
    {0x05248C44, deviceLost},   // OrvelUSBAudioDevice::stop
    {0x05248DAC, deviceLost},   // OrvelUSBAudioDevice::willTerminate
    {0x05248E00, reconfigure},  // OrvelUSBAudioDevice::formatChangeController
    {0x05249410, stop},         // OrvelUSBAudioEngine::stop
    {0x0524942C, reconfigure},  // OrvelUSBAudioEngine::controlledFormatChange
    {0x05249478, stop},         // OrvelUSBAudioEngine::performAudioEngineStop
    {0x05249488, deviceLost},   // OrvelUSBAudioEngine::willTerminate
    {0x0524980C, stop},         // OrvelUSBAudioStream::stop
    {0x05249840, reconfigure},  // OrvelUSBAudioStream::controlledFormatChange
    {0x0524986C, stop},         // OrvelUSBAudioStream::closeStreamInterface
    {0x052498C0, stop},         // OrvelUSBAudioStream::stopUSBStream
    {0x052498C4, deviceLost},   // OrvelUSBAudioStream::willTerminate
    {0x05249914, reconfigure},  // OrvelUSBAudioStream::resyncAudio stops and restarts the stream
    {0x0524991C, reconfigure},  // OrvelUSBAudioStream::ConfigureNewAlternateInterface
    {0x05249928, stop},         // OrvelUSBAudioStream::protectedCloseInterface
    {0x05249930, stop},         // OrvelUSBAudioStream::closeInterface
    {0x0524A400, stop},         // Audio2Engine::stopAudioEngine
    {0x0524A404, pause},        // Audio2Engine::pauseAudioEngine
    {0x0524A410, stop},         // Audio2Engine::stop
    {0x0524A4CC, deviceLost},   // Audio2Device::willTerminate
    {0x0524A4DC, stop},         // Audio2Device::audioEngineStopped
    {0x0524A4E4, stop},         // Audio2Device::deactivateAllAudioEngines
    {0x0524A4EC, deviceLost},   // Audio2Device::stop
    {0x0524B4A0, reconfigure},  // OrvelEmbeddedAudioZ47::SetSampleRate
    {0x0524B834, stop},         // StopAudio of the microphones
    {0x0524B840, reconfigure},  // OrvelPDMController::setDeviceSampleRate
    {0x0524B858, reconfigure},  // OrvelPDMAudio::setDeviceSampleRate
    {0x0524BC5C, reconfigure},  // OrvelEmbeddedAudioZ58::SetSampleRate
    {0x0524C070, stop},         // OrvelPimletBus::LOLineOutStop
    {0x0524C078, stop},         // OrvelPimletBus::StopAudio
    {0x0524C868, reconfigure},  // OrvelEmbeddedAudioZ26::SetSampleRate
});
static_assert(std::ranges::is_sorted(kChanges, {}, &Entry::code));

}  // namespace

EngineChange engineChangeOf(uint32_t code) {
    const auto entry = std::ranges::lower_bound(kChanges, code, {}, &Entry::code);
    return entry != kChanges.end() && entry->code == code ? entry->change : none;
}

}  // namespace sonaprobe
