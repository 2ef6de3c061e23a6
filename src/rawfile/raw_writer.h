// The raw trace file as it is written: a divisor slot, then a slot a record.

#pragma once

#include <cstdio>

#include "record/trace_record.h"

namespace sonaprobe {

// Writes Settings::tickDivisor, its fraction dropped, as the file's first slot. A failure is
// reported on standard error and changes nothing else.
void writeDivisorRecord(std::FILE* rawFile);

// Stores a record, its reserved word as 0. Records are held back and written in blocks; each that
// cannot be written is reported on standard error, and leaves no part of a slot behind in a
// regular file.
void storeRecord(std::FILE* rawFile, const TraceRecord& record);

// Writes what is held back.
void storeHeldRecords(std::FILE* rawFile);

// Writes what is held back, closes Settings::rawFile if it is open, and marks it closed.
void closeRawFile();

}  // namespace sonaprobe
