// What the program does with the kernel's trace facility. Each operation that fails ends the
// program through fatalExit with its message, or as a signal does where a signal broke it off.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/kernel_abi.h"
#include "record/trace_record.h"
#include "trace/trace_facility.h"

namespace sonaprobe {

// Room for records, to be kept to the end of the program. Without data where there is no memory
// for so many.
std::span<TraceRecord> allocateRecords(size_t count);

// Room for Settings::bufferSize records, allocated once for the whole run; empty before.
void allocateCollectionBuffer();
std::span<TraceRecord> collectionBuffer();

void removeTraceBuffer();  // a failure is not tried again at the exit
void setTraceBufferSize(uint32_t records);
void setTraceInterest(uint32_t type);  // any type but 0x200000 and 0x20000 becomes 0x40000
void setupTraceBuffer();
void enableTracing(int on);  // 0 or 1
platform::KernelBufferInfo bufferInfo();

// A result below 0 is for the caller to report.
trace::Read readTrace(std::span<TraceRecord> room);

// The kernel buffer's settings, on standard output.
void printBufferInfo();

}  // namespace sonaprobe
