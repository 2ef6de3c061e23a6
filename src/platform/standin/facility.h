// The operations of the trace facility. Each returns 0 or an errno: those named with it, an armed
// one, EPERM (not root, or the files are not to be trusted: lastRefusal() tells), ENOMEM (no room
// for the state), EINTR (a signal came while another process was at an operation) or EIO (a file
// was cut short meanwhile). getBufferInfo() and readRecords() trust a look at the files for a tenth
// of a second, all others look each time.
//
// One operation of all processes runs at a time, and is exact against producers. The first process
// that changes the facility owns it until it removes it or ends: EBUSY for any other.

#pragma once

#include <optional>
#include <sys/types.h>

#include "platform/standin/layout.h"

namespace sonaprobe::standin {

// Whoever owns the facility.
int getBufferInfo(platform::KernelBufferInfo& info);

// The audio drivers' debug flags; whoever owns the facility.
int getAudioFlags(uint32_t& flags);
int setAudioFlags(uint32_t flags);

// The size in records that setUp() uses. EINVAL: 0.
int setBufferSize(uint32_t records);

// EINVAL: not one of the three types.
int setInterest(const platform::TraceInterest& interest);

// Reserves a ring, in place of one that is set up. EINVAL: no size was set. ENOMEM: see
// createRing(); nothing is set up then.
int setUp();

// EINVAL: not set up.
int enableTracing(bool on);

// Hands out the oldest records, at most room of them, 64 bytes each, and takes them. Sets count.
// EINVAL: not set up, or no room for one record.
int readRecords(unsigned char* records, uint64_t room, uint64_t& count);

// Frees the ring, forgets size and filter, and gives the facility up. The counts stay until the
// next setUp().
int removeBuffer();

// Becomes the owner, as another tool would by its first operation, and changes nothing else.
int holdFacility();

// Back to the state after boot, armed failures, audio flags and counts included.
int resetFacility();

// Makes the next times calls of an operation fail, once after calls have passed. In place of what
// was armed for it before; times 0 disarms. Whoever owns the facility.
int armFailure(FailurePoint point, const ArmedFailure& failure);

struct FacilityStatus {
    platform::KernelBufferInfo info{};
    std::optional<pid_t> owner;  // 0: a process out of sight
    // Of the last set-up, in records. Posted = seen by readers + lost + pending.
    uint64_t posted = 0;
    uint64_t pending = 0;
    uint64_t lost = 0;
    platform::TraceInterest interest{};
    uint32_t audioFlags = 0;
};
// Whoever owns the facility.
int getStatus(FacilityStatus& status);

}  // namespace sonaprobe::standin
