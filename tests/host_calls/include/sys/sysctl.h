// sysctl as a host that has it declares it, its macros included, lest a name of ours meet one.

#pragma once

#include <sys/types.h>

#define CTL_KERN 1
#define KERN_KDEBUG 24
#define KERN_KDENABLE 3
#define KERN_KDSETBUF 4
#define KERN_KDGETBUF 5
#define KERN_KDSETUP 6
#define KERN_KDREMOVE 7
#define KERN_KDSETREG 8
#define KERN_KDREADTR 10

extern "C" {
int sysctl(int* name, u_int nameLength, void* old, size_t* oldLength, void* newValue,
           size_t newLength);
int sysctlbyname(const char* name, void* old, size_t* oldLength, void* newValue, size_t newLength);
}
