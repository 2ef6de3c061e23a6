// The three passes that take records out of the kernel's trace buffer.

#pragma once

namespace sonaprobe {

class RawWriter;

// --dump: one read of the facility as it stands, into a buffer of the kernel buffer's size.
void dumpOnceWithAlloc();

// One pass of the live print mode.
void collectAndPrint();

// One pass of the live write mode: each valid record is stored in the raw file, then printed.
void writeRawRecords(RawWriter& rawFile);

// The 20 ms between two live passes.
void sleepBetweenPasses();

}  // namespace sonaprobe
