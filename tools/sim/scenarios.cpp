// Lists the scenarios.

#include "sim/scenarios.h"

#include "sim/messages.h"
#include "sim/stories/stories.h"

namespace sonaprobe::sim {
namespace {

constexpr const Story* kEveryStory[] = {&kPlayback, &kUsb, &kDisplayPort, &kHeadset, &kVoice};
constexpr std::span<const Story* const> kStories = kEveryStory;

constexpr Scenario kScenarios[] = {
    {"playback", "built-in output plays, with the audio server's I/O cycles and a dropout",
     kStories.subspan(0, 1)},
    {"usb", "a USB headset is plugged in, streams with jitter and is unplugged",
     kStories.subspan(1, 1)},
    {"displayport", "display-port output goes through sleep and wake", kStories.subspan(2, 1)},
    {"headset", "a headset with a remote is inserted, its buttons are pressed",
     kStories.subspan(3, 1)},
    {"voice", "the voice trigger wakes the device", kStories.subspan(4, 1)},
    {"all", "all of these at once", kStories},
};

}  // namespace

std::span<const Scenario> scenarios() { return kScenarios; }

const Scenario* findScenario(std::string_view name) {
    for (const Scenario& scenario : kScenarios) {
        if (scenario.name == name) return &scenario;
    }
    complain("unknown scenario '%.*s'; sonaprobe-sim scenarios lists them",
             static_cast<int>(name.size()), name.data());
    return nullptr;
}

}  // namespace sonaprobe::sim
