// Answers open, read and close of the input; other files are the system's.

#include "input_file.h"

#include <algorithm>
#include <sys/types.h>
#include <vector>

namespace {

constexpr int kFirstFile = 1 << 20;  // beyond those of the system

const std::string path = "/input";
std::span<const uint8_t> content;
std::vector<std::span<const uint8_t>> unread;  // by opening

}  // namespace

const std::string& sonaprobe::fuzz::inputFile(std::span<const uint8_t> bytes) {
    content = bytes;
    unread.clear();
    return path;
}

extern "C" {

int __real_open(const char* name, int flags, ...);
int __wrap_open(const char* name, int flags, unsigned mode) {
    if (name != path) return __real_open(name, flags, mode);
    unread.push_back(content);
    return kFirstFile + static_cast<int>(unread.size()) - 1;
}

ssize_t __real_read(int file, void* bytes, size_t size);
ssize_t __wrap_read(int file, void* bytes, size_t size) {
    if (file < kFirstFile) return __real_read(file, bytes, size);
    auto& left = unread[static_cast<size_t>(file - kFirstFile)];
    const auto now = left.first(std::min(size, left.size()));
    left = left.subspan(now.size());
    std::ranges::copy(now, static_cast<uint8_t*>(bytes));
    return static_cast<ssize_t>(now.size());
}

int __real_close(int file);
int __wrap_close(int file) { return file < kFirstFile ? __real_close(file) : 0; }
}
