// The program's session with the kernel's trace facility.

#pragma once

#include "live/trace_session.h"

namespace sonaprobe {

TraceSession& traceSession();

// Starts the drivers unless --notrace, and prints the version line.
void setAudioDebugFlags();

// The kernel buffer's settings, on standard output.
void printBufferInfo();

}  // namespace sonaprobe
