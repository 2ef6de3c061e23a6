// The operations of the kernel's trace facility. Each one that fails ends the program through
// fatalExit with its message.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/kernel_abi.h"
#include "record/trace_record.h"

namespace sonaprobe {

// Room for Settings::bufferSize records, allocated once for the whole run; empty before.
void allocateCollectionBuffer();
std::span<TraceRecord> collectionBuffer();

void removeTraceBuffer();  // a failure is not tried again at the exit
void setTraceBufferSize(uint32_t records);
void setTraceInterest(uint32_t type);  // any type but 0x200000 and 0x20000 becomes 0x40000
void setupTraceBuffer();
void enableTracing(int on);  // 0 or 1
void getBufferInfo(platform::KernelBufferInfo* info);

// The facility's answer to a read: `result` below 0 is an error, for the caller to report.
struct TraceRead {
    int result;
    size_t records;  // handed out, never more than there was room for
};
TraceRead readTrace(std::span<TraceRecord> room);

// The kernel buffer's settings, on standard output.
void printBufferInfo();

}  // namespace sonaprobe
