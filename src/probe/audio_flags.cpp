// The audio drivers' debug flags, through the kernel's "debug.Audio".

#include "probe/audio_flags.h"

#include <cstddef>

#include "platform/platform.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/usage.h"

namespace sonaprobe {

namespace {

using platform::AudioDebugFlagsRequest;

constexpr const char* kFlagsName = "debug.Audio";

bool getFlags(AudioDebugFlagsRequest& reply) {
    AudioDebugFlagsRequest request{platform::kAudioDebugMagic, platform::kAudioFlagsGet, 0};
    size_t length = sizeof reply;
    return sysctlbyname(kFlagsName, &reply, &length, &request, sizeof request) == 0;
}

void setFlags(uint32_t flags) {
    AudioDebugFlagsRequest request{platform::kAudioDebugMagic, platform::kAudioFlagsSet, flags};
    if (sysctlbyname(kFlagsName, nullptr, nullptr, &request, sizeof request) != 0) {
        printMessage(stderr, "sysctlbyname failed to set new 'audio' debug flags\n");
    }
}

}  // namespace

void setAudioDebugFlags() {
    if (!settings.enableAudioTracing) {
        if (settings.line.verbose) printMessage(stdout, "Will not enable Audio tracing.\n");
        return;
    }
    AudioDebugFlagsRequest reply{};
    bool known = getFlags(reply);
    if (!known) known = getFlags(reply);
    if (!known) {
        printMessage(stderr, "sysctlbyname failed to get old 'audio' debug flags second time\n");
        reply.value = 0;
    }
    settings.savedAudioFlags = reply.value;
    setFlags(settings.savedAudioFlags | platform::kAudioTracingOn);
    printVersion();
}

void restoreAudioDebugFlags() { setFlags(settings.savedAudioFlags); }

}  // namespace sonaprobe
