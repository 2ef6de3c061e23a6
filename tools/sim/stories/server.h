// The audio server's side of output, the same in all stories with sound: 512 frames a cycle at
// 48 kHz.

#pragma once

#include "sim/stories/codes.h"
#include "sim/story.h"

namespace sonaprobe::sim {

// Variables 0 to 2 of a story that uses these tables.
enum ServerVariable : uint8_t { serverSample, serverRunning, serverLost, firstOwnVariable };

constexpr uint64_t kServerRate = 48000;
constexpr uint64_t kCycleFrames = 512;
constexpr Ticks kCyclePeriod = kTicksPerSecond * kCycleFrames / kServerRate;
constexpr uint64_t kTicksPerFrame = kTicksPerSecond / kServerRate;

// Clients are asked for the samples of the cycle after the next.
inline constexpr Step kServerCycle[] = {
    start(server::kIoCycle, var(serverSample), now(), kCycleFrames),
        wait(us(5), us(15)),
        start(server::kClient, 0, 0, var(serverSample, 2 * kCycleFrames), beat(2 * kCyclePeriod)),
            wait(us(180), us(420)),
        end(server::kClient),
    end(server::kIoCycle, var(serverSample, kCycleFrames), beat(kCyclePeriod)),
    add(serverSample, kCycleFrames),
};

// The first time stamp, which later ones are counted from.
inline constexpr Step kServerAnchor[] = {
    instant(server::kZeroTimeStamp, var(serverSample), now(), kTicksPerFrame, 1),
};

}  // namespace sonaprobe::sim
