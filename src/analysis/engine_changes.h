// Which driver calls stop, pause or reconfigure an engine, or lose its device.

#pragma once

#include <cstdint>

namespace sonaprobe {

enum class EngineChange : uint8_t { none, stop, pause, reconfigure, deviceLost };

EngineChange engineChangeOf(uint32_t code);

}  // namespace sonaprobe
