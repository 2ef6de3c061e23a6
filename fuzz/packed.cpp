// Packed files whose bytes are anything: they unpack to some bytes or are said to be damaged, and
// unpacking ends.

#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "fuzz.h"
#include "scope/byte_source.h"
#include "scope/failure.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("packed", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    require(ftruncate(file, 0) == 0, "the file can be emptied");
    require(pwrite(file, data, size, 0) == static_cast<ssize_t>(size), "the file takes it");

    std::vector<std::byte> room(65536);
    uint64_t unpacked = 0;
    try {
        ByteSource source(path);
        for (size_t got = source.read(room); got > 0; got = source.read(room)) unpacked += got;
        require(source.read(room) == 0, "the end stays the end");
        if (source.packing() == nullptr) require(unpacked == size, "what is not packed stays");
    } catch (const Failure& failure) {
        require(!failure.message.empty(), "a failure is told");
    }
    return 0;
}
