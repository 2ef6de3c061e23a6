// The process's hold on the facility: its folder and state file, checked and mapped once, and the
// two locks that end with the process, whatever ends it.

#pragma once

#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <sys/types.h>

#include "platform/standin/layout.h"

namespace sonaprobe::standin {

// For one thread of the process at a time: all but lastRefusal() and refuse() is called under it.
std::unique_lock<std::mutex> holdAttachment();

// Whether to look at the files although they were looked at less than a tenth of a second ago.
enum class Look { now, ifOld };

// Finds the state, made anew where there is none, and checks, unless the last look is young enough,
// that folder and file are still the ones mapped: root's own, closed to others, no links, with a
// header that checks out. A state that was cut short meanwhile is brought back to what it is after
// boot. Null with errno else: EPERM where something is not to be trusted (lastRefusal() tells),
// ENOMEM without room, EINTR as lockOperations(). A state mapped once stays mapped.
State* attach(Look look = Look::now);

// How often this process has looked at the files.
uint64_t looks();

// Why the last attach() or mapRing() of this thread answered EPERM; empty where none did.
struct Refusal {
    const char* path;
    const char* reason;
};
const Refusal& lastRefusal();

// Notes the refusal and returns EPERM.
int refuse(const char* path, const char* reason);

// What is wrong with a file of the facility, null when nothing is. The type is S_IFREG or S_IFDIR.
const char* flawOf(const struct stat& file, mode_t type);

// The folder's descriptor of the last successful attach().
int folderDescriptor();

// The operation lock, waited for. After attach(). False with errno: EINTR where a signal that the
// program handles came meanwhile, else as the kernel refuses. A holder that lets others wait for
// long is told of on standard error.
bool lockOperations();
void unlockOperations();

// Ownership: another process cannot have it while this one lives and has not given it up. Under
// the operation lock.
bool takeOwnership();
void giveUpOwnership();
bool ownedHere();

// The process that owns the facility, 0 where it is out of this process's sight; none: no owner.
std::optional<pid_t> owner();

}  // namespace sonaprobe::standin
