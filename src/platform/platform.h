// The contract of the four calls by which the program meets the kernel. The host's own are used
// where it has them all (host/calls.h includes the system headers); elsewhere the stand-in of the
// same names keeps this contract (standin/calls.h). The build puts one of the two folders on the
// include path; code above this line looks the same in both builds.
//
// int sysctl(int* name, unsigned nameLength, void* old, size_t* oldLength,
//            void* newValue, size_t newLength)
//     The trace facility: name is {CTL_KERN, KERN_KDEBUG, operation} or the same with a fourth
//     word, a value. newValue is null and newLength 0 in every call. Returns 0, or -1 with errno;
//     EINTR where a signal came while the call waited.
//
//     operation        words  old buffer          *oldLength in -> out
//     KERN_KDENABLE      4    none                switches tracing on (1) or off (0)
//     KERN_KDSETBUF      4    none                sets the size in records, used by KERN_KDSETUP
//     KERN_KDGETBUF      3    KernelBufferInfo    20 bytes -> 20 bytes
//     KERN_KDSETUP       3    none                reserves the buffer
//     KERN_KDREMOVE      3    none                frees it; EBUSY while another tool owns it
//     KERN_KDSETREG      3    TraceInterest (in)  20 bytes; the filter travels in the old buffer
//     KERN_KDREADTR      3    TraceRecord[]       bytes of room -> records handed out
//
// int sysctlbyname(const char* name, void* old, size_t* oldLength, void* newValue,
//                  size_t newLength)
//     "debug.Audio", the audio drivers' debug flags, through the 12-byte AudioDebugFlagsRequest
//     as new value: operation 0 (get) answers the same record in old, 1 (set) has no old buffer.
//
// int mach_timebase_info(mach_timebase_info_data_t* timebase)
//     A tick of the trace clock is numer / denom nanoseconds. Returns 0.
//
// int reexec_to_match_kernel()
//     Starts the program anew as the variant that matches the kernel's architecture, and returns
//     0 when the present process may go on, else non-zero with errno set.

#pragma once

#include "calls.h"
#include "platform/kernel_abi.h"
