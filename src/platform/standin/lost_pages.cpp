// The handler of SIGBUS, and the mappings it knows.

#include "platform/standin/lost_pages.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace sonaprobe::standin {
namespace {

// Free: begin is 0. A slot is claimed by its begin, and guards once its end is set.
struct Guarded {
    std::atomic<uintptr_t> begin;
    std::atomic<uintptr_t> end;
    std::atomic<bool> lost;
};
std::array<Guarded, kMostGuarded> guarded;

uintptr_t pageSize = 0;

uintptr_t addressOf(const void* base) { return reinterpret_cast<uintptr_t>(base); }

Guarded* find(const void* base) {
    for (Guarded& mapping : guarded) {
        if (mapping.begin.load() == addressOf(base)) return &mapping;
    }
    return nullptr;
}

bool putEmptyPage(void* address) {
    const uintptr_t fault = addressOf(address);
    for (Guarded& mapping : guarded) {
        if (mapping.begin.load() == 0 || fault < mapping.begin.load()) continue;
        if (fault >= mapping.end.load()) continue;
        mapping.lost.store(true);
        void* const page = static_cast<char*>(address) - fault % pageSize;
        return mmap(page, pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED,
                    -1, 0) != MAP_FAILED;
    }
    return false;
}

extern "C" void onLostPage(int number, siginfo_t* info, void*) {
    const int error = errno;
    if (!putEmptyPage(info->si_addr)) std::signal(number, SIG_DFL);  // it comes again
    errno = error;
}

void installHandler() {
    pageSize = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    struct sigaction action {};
    action.sa_sigaction = onLostPage;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGBUS, &action, nullptr);
}

}  // namespace

void guardMapping(const void* base, size_t length) {
    static const bool installed = (installHandler(), true);
    static_cast<void>(installed);
    for (Guarded& mapping : guarded) {
        uintptr_t free = 0;
        if (!mapping.begin.compare_exchange_strong(free, addressOf(base))) continue;
        mapping.lost.store(false);
        mapping.end.store(addressOf(base) + length);
        return;
    }
}

void releaseMapping(const void* base) {
    Guarded* const mapping = find(base);
    if (mapping == nullptr) return;
    mapping->end.store(0);
    mapping->begin.store(0);
}

bool hasLostPages(const void* base) {
    const Guarded* const mapping = find(base);
    return mapping != nullptr && mapping->lost.load();
}

}  // namespace sonaprobe::standin
