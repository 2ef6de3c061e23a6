// The operations of the kernel's trace facility. Each returns whether it succeeded, and leaves
// errno as the kernel's where it did not.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/kernel_abi.h"
#include "record/trace_record.h"

namespace sonaprobe::trace {

bool getBufferInfo(platform::KernelBufferInfo& info);
bool removeBuffer();
bool setBufferSize(uint32_t records);
bool setInterest(platform::TraceInterest interest);
bool setUpBuffer();
bool enable(bool on);

// The facility's answer to a read: `result` below 0 is an error.
struct Read {
    int result;
    size_t records;  // handed out, never more than there was room for
};
Read read(std::span<TraceRecord> room);

}  // namespace sonaprobe::trace
