// Draws and clears the progress bar. There is one terminal, hence one bar.

#include "scope/progress.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <unistd.h>

namespace sonaprobe::scope {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPatience{1000};
constexpr milliseconds kInterval{100};
constexpr uint64_t kCells = 40;

// One thread has the bar: that which the program began with.
const std::thread::id kFirstThread = std::this_thread::get_id();

std::atomic<bool> drawn = false;
bool ended = false;

}  // namespace

Progress::Progress()
    : enabled_(std::this_thread::get_id() == kFirstThread && isatty(STDERR_FILENO) != 0) {}

void Progress::show(uint64_t done, uint64_t total) {
    if (!enabled_ || ended) return;
    const Clock::time_point now = Clock::now();
    if (now - begin_ < kPatience || now - shown_ < kInterval) return;
    shown_ = now;
    drawn = true;
    if (total == 0) {
        std::fprintf(stderr, "\r\x1b[K%llu MiB read", static_cast<unsigned long long>(done >> 20));
        return;
    }
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    std::string bar(kCells, '.');
    std::fill_n(bar.begin(), static_cast<long>(share * kCells), '#');
    std::fprintf(stderr, "\r\x1b[K[%s] %3.0f %%", bar.c_str(), share * 100);
}

void Progress::clear() {
    if (drawn) std::fputs("\r\x1b[K", stderr);
    drawn = false;
}

void Progress::end() {
    clear();
    ended = true;
}

}  // namespace sonaprobe::scope
