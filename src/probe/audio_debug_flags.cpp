// The audio drivers' debug flags, through the kernel's "debug.Audio".

#include "probe/audio_debug_flags.h"

#include <cerrno>
#include <cstddef>

#include "platform/platform.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/signals.h"
#include "probe/usage.h"

namespace sonaprobe {

namespace {

using platform::AudioDebugFlagsRequest;

constexpr const char* kFlagsName = "debug.Audio";

// Whether a call was answered. A signal that broke it off while it waited ends the program.
bool isDone(int result) {
    if (result != 0 && errno == EINTR) takeSignal();
    return result == 0;
}

bool getFlags(AudioDebugFlagsRequest& reply) {
    AudioDebugFlagsRequest request{platform::kAudioDebugMagic, platform::kAudioFlagsGet, 0};
    size_t length = sizeof reply;
    return isDone(sysctlbyname(kFlagsName, &reply, &length, &request, sizeof request));
}

void setFlags(uint32_t flags) {
    AudioDebugFlagsRequest request{platform::kAudioDebugMagic, platform::kAudioFlagsSet, flags};
    if (!isDone(sysctlbyname(kFlagsName, nullptr, nullptr, &request, sizeof request))) {
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
