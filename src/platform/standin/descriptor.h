// A file descriptor that closes itself.

#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace sonaprobe::standin {

// Owns a descriptor, or none: -1, as open() answers. To close it leaves errno as it was.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int file) : file_(file) {}
    Descriptor(Descriptor&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    ~Descriptor() {
        if (file_ < 0) return;
        const int error = errno;
        ::close(file_);
        errno = error;
    }

    int number() const { return file_; }
    explicit operator bool() const { return file_ >= 0; }

  private:
    int file_ = -1;
};

}  // namespace sonaprobe::standin
