// Sets the soft limit of data.

#include "scope/memory_limit.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

namespace sonaprobe::scope {

namespace {

// Pages of data that are mapped, which sanitizers have many of.
uint64_t mappedPages() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/self/statm", "r"),
                                                               std::fclose);
    unsigned long long data = 0;
    if (file == nullptr || std::fscanf(file.get(), "%*u %*u %*u %*u %*u %llu", &data) != 1) {
        return 0;
    }
    return data;
}

void setDataLimit(rlim_t most) {
    rlimit limit{};
    if (getrlimit(RLIMIT_DATA, &limit) != 0) return;
    limit.rlim_cur = std::min(most, limit.rlim_max);
    setrlimit(RLIMIT_DATA, &limit);
}

}  // namespace

void limitMemory() {
    rlimit limit{};
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long size = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || size <= 0 || getrlimit(RLIMIT_DATA, &limit) != 0) return;
    const uint64_t most = mappedPages() + static_cast<uint64_t>(pages) / 4 * 3;
    const auto bytes = static_cast<rlim_t>(most * static_cast<uint64_t>(size));
    if (bytes < limit.rlim_cur) setDataLimit(bytes);
}

void liftMemoryLimit() { setDataLimit(RLIM_INFINITY); }

}  // namespace sonaprobe::scope
