// Copies a pipe where it is to be read twice.

#include "scope/repeatable.h"

#include <array>
#include <cstdio>
#include <unistd.h>

#include "scope/failure.h"
#include "scope/file_bytes.h"

namespace sonaprobe::scope {

void makeRepeatable(TraceOptions& trace) {
    constexpr size_t kRoom = 1 << 16;
    FileBytes bytes(trace.path);
    if (bytes.repeatable()) return;
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
    trace.copyOf = trace.path;
    trace.path = "/dev/fd/" + std::to_string(fileno(copy));
}

}  // namespace sonaprobe::scope
