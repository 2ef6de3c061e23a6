// The host's own declarations of the four platform calls.

#pragma once

#include <mach/mach_time.h>
#include <sys/sysctl.h>
#include <sys/types.h>

// Exported by the host's C library, declared by none of its public headers.
extern "C" int reexec_to_match_kernel();
