// Copies a pipe where it is to be read twice.

#include "scope/repeatable.h"

#include <array>
#include <cstdio>
#include <unistd.h>

#include "scope/failure.h"
#include "scope/file_bytes.h"

namespace sonaprobe::scope {

std::string repeatablePath(const std::string& path) {
    constexpr size_t kRoom = 1 << 16;
    FileBytes bytes(path);
    if (bytes.repeatable()) return path;
    // Stays open, hence in being, for as long as the program runs.
    std::FILE* const copy = std::tmpfile();
    if (copy == nullptr) throw systemFailure("could not copy " + bytes.name());
    std::array<std::byte, kRoom> room{};
    for (size_t got = bytes.read(room); got > 0; got = bytes.read(room)) {
        if (std::fwrite(room.data(), 1, got, copy) != got) {
            throw systemFailure("could not copy " + bytes.name());
        }
    }
    if (std::fflush(copy) != 0) throw systemFailure("could not copy " + bytes.name());
    return "/dev/fd/" + std::to_string(fileno(copy));
}

}  // namespace sonaprobe::scope
