// The stories, each in the source of its name.

#pragma once

#include "sim/story.h"

namespace sonaprobe::sim {

extern const Story kPlayback;
extern const Story kUsb;
extern const Story kDisplayPort;
extern const Story kHeadset;
extern const Story kVoice;

}  // namespace sonaprobe::sim
