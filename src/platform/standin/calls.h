// The stand-in's declarations of the four platform calls, for hosts that lack them; the contract
// is in platform/platform.h.

#pragma once

#include <cstddef>
#include <cstdint>

struct mach_timebase_info_data_t {
    uint32_t numer;
    uint32_t denom;
};

extern "C" {
int sysctl(int* name, unsigned nameLength, void* old, size_t* oldLength, void* newValue,
           size_t newLength);
int sysctlbyname(const char* name, void* old, size_t* oldLength, void* newValue, size_t newLength);
int mach_timebase_info(mach_timebase_info_data_t* timebase);
int reexec_to_match_kernel();
}
