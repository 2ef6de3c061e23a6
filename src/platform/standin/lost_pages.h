// Mapped files that somebody cuts short: the process goes on with empty pages in place of those
// that are gone, and can find out.

#pragma once

#include <cstddef>

namespace sonaprobe::standin {

// From now on a page of this mapping that its file has lost is empty and the process's own, where
// the kernel would end the process by SIGBUS. Any number of mappings up to kMostGuarded; those
// beyond are not guarded. For all threads.
constexpr size_t kMostGuarded = 128;
void guardMapping(const void* base, size_t length);

// To be called before the mapping ends.
void releaseMapping(const void* base);

// Whether a page of the guarded mapping was lost.
bool hasLostPages(const void* base);

}  // namespace sonaprobe::standin
