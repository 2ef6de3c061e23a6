// sonaprobe-sim status: the state of the facility, one "name: value" a line.

#include <cinttypes>
#include <cstdio>

#include "platform/standin/facility.h"
#include "sim/arguments.h"
#include "sim/messages.h"

namespace sonaprobe::sim {
namespace {

void printOwner(std::optional<pid_t> owner) {
    if (!owner) {
        std::puts("owner: none");
    } else if (*owner <= 0) {
        std::puts("owner: out of sight");
    } else {
        std::printf("owner: %d\n", *owner);
    }
}

}  // namespace

int runStatus(Arguments arguments) {
    if (!readArguments(arguments, {}, {})) return 1;
    standin::FacilityStatus status;
    const int error = standin::getStatus(status);
    if (error != 0) return facilityFailure("read the state", error);
    const platform::KernelBufferInfo& info = status.info;
    std::printf("entries: %" PRId32 "\nnolog: %" PRId32 "\nflags: 0x%" PRIx32 "\n", info.entries,
                info.nolog, info.flags);
    std::printf("threads: %" PRId32 "\nbufid: %" PRId32 "\n", info.threads, info.bufid);
    printOwner(status.owner);
    std::printf("posted: %" PRIu64 "\npending: %" PRIu64 "\nlost: %" PRIu64 "\n", status.posted,
                status.pending, status.lost);
    const platform::TraceInterest& interest = status.interest;
    std::printf("interest: 0x%" PRIx32 " 0x%" PRIx32 " 0x%" PRIx32 " 0x%" PRIx32 " 0x%" PRIx32 "\n",
                interest.type, interest.value1, interest.value2, interest.value3, interest.value4);
    std::printf("audio-debug-flags: %" PRIu32 "\n", status.audioFlags);
    return 0;
}

}  // namespace sonaprobe::sim
