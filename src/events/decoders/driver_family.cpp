// The generic driver family, from whose base classes all audio drivers derive: controls, devices,
// engines and ports (classes 1, 3, 4, 7).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kControlRows[] = {
    event(0x05240430, "Start"),
    start("Begin: provider %p", named("provider", a2)),
    end("End: provider %p returning %s", named("provider", a2), named("returning", boolean(a3))),
};

constexpr Entry kDeviceRows[] = {
    event(0x05240C0C, "Start"),
    start("Begin: provider %p", named("provider", a2)),
    end("End: provider %p returning %s", named("provider", a2), named("returning", boolean(a3))),

    event(0x05240C18, "setPowerState"),
    start("Begin: powerStateOrdinal: %lld device: %p currentPowerState: %lld pendingPowerState: %lld", a2, a1, a3, a4),  // four values: the device is the object itself
    end("End: currentPowerState: %lld device: %p result: 0x%llx", a2, a3, a4),

    event(0x05240C1C, "_setPowerStateAction"),
    start("Begin: arg1: %p arg2: %p", a2, a3),
    end("End: arg1: %p arg2: %p result: 0x%llx", a2, a3, a4),

    event(0x05240C20, "setPowerStateAction"),
    start("Begin: arg1: %p arg2: %p", a2, a3),
    end("End: arg1: %p arg2: %p result: 0x%llx", a2, a3, a4),

    event(0x05240C24, "protectedSetPowerState"),
    start("Begin: powerStateOrdinal: %lld device: %p asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End: powerStateOrdinal: %lld device: %p result: 0x%llx", a2, a3, a4),
    sel(1, "going to wake/1 - getPowerState(): %lld numRunningAudioEngines: %lld", a2, a3),
    sel(0, "going to sleep/0 - getPowerState(): %lld currentPowerState: %lld", a2, a3),

    event(0x05240C28, "waitForPendingPowerStateChange"),
    start("Begin: asyncPowerStateChangeInProgress: %s", boolean(a2)),
    end("End: asyncPowerStateChangeInProgress: %s", boolean(a2)),

    event(0x05240C2C, "initiatePowerStateChange"),
    start("Begin: currentPowerState: %lld pendingPowerState: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End: currentPowerState: %lld microsecondsUntilComplete: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),

    event(0x05240C30, "completePowerStateChange"),
    start("Begin: currentPowerState: %lld pendingPowerState: %lld asyncPowerStateChangeInProgress: %s", a2, a3, boolean(a4)),
    end("End: currentPowerState: %lld pendingPowerState: %lld result: 0x%llx", a2, a3, a4),
};

constexpr Entry kEngineRows[] = {
    event(0x05241048, "Start"),
    start("Begin: provider %p device %p", named("provider", a2), named("device", a3)),
    end("End: provider %p device %p returning %s", named("provider", a2), named("device", a3), named("returning", boolean(a4))),

    event(0x05241094, "startClient"),
    start("Begin: userClient %p", named("userClient", a2)),
    end("End: userClient %p returning 0x%llx", named("userClient", a2), named("returning", a3)),

    event(0x052410BC, "startAudioEngine"),
    start("Begin: state %lld", named("state", a2)),
    end("End: state %lld returning 0x%llx", named("state", a2), named("returning", a3)),

    event(0x052410C8, "resumeAudioEngine"),
    start("Begin: state %lld", named("state", a2)),
    end("End: state %lld returning 0x%llx", named("state", a2), named("returning", a3)),
    sel(0, "state: %lld calling commandWakeup", a2),

    event(0x052410D8, "getState"),
    verbose(sel(0, "index: %lld state: %lld", a2, a3)),

    event(0x052410DC, "setState"),
    start("index: %lld state: %lld going to newState: %lld", a2, a3, named("newState", a4)),
    end("index: %lld state: %lld returning oldState: %lld", a2, a3, a4),
    sel(0, "oldstate: %lld state: %lld calling commandWakeup", a2, a3),

    event(0x05241160, "waitForEngineResume"),
    start("Begin - state: %lld", a2),
    end("End - state: %lld returning 0x%llx", a2, named("returning", a3)),
    sel(0, "state: %lld calling commandSleep", a2),
    failure(sel(1, "commandSleep timed out, but state (%lld) is not paused!", named("state", a2))),
};

constexpr Entry kPortRows[] = {
    event(0x05241C18, "Start"),
    start("Begin: provider %p", named("provider", a2)),
    end("End: provider %p returning %s", named("provider", a2), named("returning", boolean(a3))),
};

}  // namespace

constexpr Decoder kPlexoControl = decoder<kControlRows, "PlexoControl">(audioClass(1), 1);
constexpr Decoder kPlexoDevice = decoder<kDeviceRows, "PlexoDevice">(audioClass(3), 8);
constexpr Decoder kPlexoEngine = decoder<kEngineRows, "PlexoEngine">(audioClass(4), 7);
constexpr Decoder kPlexoPort = decoder<kPortRows, "PlexoPort">(audioClass(7), 1);

}  // namespace sonaprobe::decoders
