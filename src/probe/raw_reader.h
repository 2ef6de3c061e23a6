// --read: a raw trace file's records as lines.

#pragma once

namespace sonaprobe {

// Prints every record of the file as if it had just been collected, and takes over the divisor of
// each divisor slot on the way. Works on files of any size, pipes and devices, in constant memory;
// a part of a slot at the end is ignored. A path that cannot be opened is fatal.
void readRawFile(const char* path);

}  // namespace sonaprobe
