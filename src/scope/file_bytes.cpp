// Opens and reads what a path names.

#include "scope/file_bytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// Opening a pipe waits for its writer.
int openPath(const std::string& path) {
    if (path == "-") return dup(STDIN_FILENO);
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
}

std::string nameOf(const std::string& path) {
    return path == "-" ? "standard input" : escaped(path);
}

}  // namespace

FileBytes::FileBytes(const std::string& path, const std::string& copyOf)
    : isStandardInput_(path == "-"),
      name_(nameOf(copyOf.empty() ? path : copyOf)),
      file_(openPath(path)) {
    if (file_ < 0) throw systemFailure("could not open " + name_);
    if (isatty(file_) != 0) {
        close(file_);
        throw Failure{name_ + " is a terminal; give a raw file, as sonaprobe -w writes it"};
    }
    struct stat status {};
    if (fstat(file_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_ = static_cast<uint64_t>(status.st_size);
    }
    while (headBytes_ < head_.size()) {
        const size_t got = readFile(std::span(head_).subspan(headBytes_));
        if (got == 0) break;
        headBytes_ += got;
    }
}

FileBytes::~FileBytes() { close(file_); }

size_t FileBytes::readFile(std::span<std::byte> room) {
    for (;;) {
        const ssize_t got = ::read(file_, room.data(), room.size());
        if (got >= 0) return static_cast<size_t>(got);
        if (errno != EINTR) throw systemFailure("could not read " + name_);
    }
}

size_t FileBytes::read(std::span<std::byte> room) {
    size_t got = std::min(room.size(), headBytes_ - headGiven_);
    if (got > 0) {
        std::memcpy(room.data(), head_.data() + headGiven_, got);
        headGiven_ += got;
    } else {
        got = readFile(room);
    }
    bytesRead_ += got;
    return got;
}

void FileBytes::skipTo(uint64_t offset) {
    headGiven_ = headBytes_;
    bytesRead_ = offset;
    if (lseek(file_, static_cast<off_t>(offset), SEEK_SET) < 0) {
        throw systemFailure("could not read " + name_);
    }
}

size_t FileBytes::readAt(uint64_t offset, std::span<std::byte> room) const {
    for (;;) {
        const ssize_t got = pread(file_, room.data(), room.size(), static_cast<off_t>(offset));
        if (got >= 0) return static_cast<size_t>(got);
        if (errno != EINTR) throw systemFailure("could not read " + name_);
    }
}

bool FileBytes::isFileOf(const std::string& path) const {
    struct stat own {};
    struct stat other {};
    return fstat(file_, &own) == 0 && stat(path.c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

}  // namespace sonaprobe::scope
