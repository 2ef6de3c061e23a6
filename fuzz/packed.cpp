// Packed files whose bytes are anything: they unpack to some bytes or are said to be damaged, and
// unpacking ends.

#include <vector>

#include "fuzz.h"
#include "input_file.h"
#include "scope/byte_source.h"
#include "scope/failure.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static std::vector<std::byte> room(65536);
    uint64_t unpacked = 0;
    try {
        ByteSource source(fuzz::inputFile({data, size}));
        for (size_t got = source.read(room); got > 0; got = source.read(room)) unpacked += got;
        require(source.read(room) == 0, "the end stays the end");
        if (source.packing() == nullptr) require(unpacked == size, "what is not packed stays");
    } catch (const Failure& failure) {
        require(!failure.message.empty(), "a failure is told");
    }
    return 0;
}
