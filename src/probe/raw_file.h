// The raw file of live write mode: which file it is, and what is said of it.

#pragma once

namespace sonaprobe {

class RawWriter;

// Opens Settings::rawPath, emptied, with the divisor as its first slot. A file that cannot be
// opened is fatal; a slot that cannot be written is reported on standard error.
RawWriter& openRawFile();

// Writes what the file still lacks and closes it, if it is open.
void closeRawFile();

}  // namespace sonaprobe
