// The live trace as the program uses it, and what is said of it.

#pragma once

#include "live/live_trace.h"

namespace sonaprobe {

LiveTrace& liveTrace();

// Starts the drivers unless --notrace, and prints the version line.
void setAudioDebugFlags();

// The kernel buffer's settings, on standard output.
void printBufferInfo();

}  // namespace sonaprobe
