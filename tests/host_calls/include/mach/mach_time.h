// The trace clock's timebase, declared as a host that has it declares it.

#pragma once

#include <stdint.h>

struct mach_timebase_info {
    uint32_t numer;
    uint32_t denom;
};
typedef struct mach_timebase_info mach_timebase_info_data_t;
typedef struct mach_timebase_info* mach_timebase_info_t;

extern "C" int mach_timebase_info(mach_timebase_info_t info);
