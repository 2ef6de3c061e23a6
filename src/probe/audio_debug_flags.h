// The audio drivers' debug flags, which make them post trace records.

#pragma once

namespace sonaprobe {

// Saves the present flags in Settings::savedAudioFlags and sets bit 0 beside them, unless
// --notrace. Failures are reported on standard error and change nothing else.
void setAudioDebugFlags();

// Sets the flags to Settings::savedAudioFlags, whether or not they were read before.
void restoreAudioDebugFlags();

}  // namespace sonaprobe
