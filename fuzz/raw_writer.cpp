// Writing a raw file whose writes are cut short, fail and are broken off: each record is stored or
// reported lost, and the file holds whole slots in order.

#include "rawfile/raw_writer.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "fuzz.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

// What the writes of one input meet, and what the writer told of them.
struct Disk {
    Input outcomes{nullptr, 0};
    bool givenUp = false;
    std::vector<uint64_t> lost{};
};
Disk* disk = nullptr;  // while a writer is at work

void noteLost(const TraceRecord& record, int error) {
    require(error != 0, "a loss has a reason");
    disk->lost.push_back(record.timestamp);
}

bool goOn(RawWriter::Broken) {
    disk->givenUp = disk->outcomes.number<uint8_t>() % 4 == 0;
    return !disk->givenUp;
}

}  // namespace

extern "C" {
ssize_t __real_write(int file, const void* bytes, size_t size);

ssize_t __wrap_write(int file, const void* bytes, size_t size) {
    if (disk == nullptr || size == 0) return __real_write(file, bytes, size);
    require(!disk->givenUp, "nothing is written any more once that was given up");
    const auto outcome = disk->outcomes.number<uint8_t>();
    switch (outcome & 7) {
        case 1: errno = EINTR; return -1;
        case 2: errno = ENOSPC; return -1;
        case 3: errno = EAGAIN; return -1;
        case 4: return __real_write(file, bytes, 1 + outcome % size);
        case 5: return __real_write(file, bytes, size - outcome % size);
        default: return __real_write(file, bytes, size);
    }
}
}

namespace {

// Stores numbered records, and now and then a divisor or what is held; how many records.
uint64_t use(RawWriter& writer, Input& input) {
    TraceRecord record{};
    record.debugid = 0x05245C0E;
    record.reserved = ~uint64_t{0};
    uint64_t count = 0;
    while (!input.atEnd() && count < 5000) {
        const auto step = input.number<uint8_t>();
        if (step == 0) {
            writer.writeDivisor(count);
        } else if (step < 32) {
            writer.writeHeld();
        } else {
            for (unsigned left = step < 240 ? 1 : 8U * step; left > 0; --left) {
                record.timestamp = ++count;
                writer.store(record);
            }
        }
    }
    return count;
}

std::vector<uint64_t> storedIn(int file) {
    const off_t size = lseek(file, 0, SEEK_END);
    require(size % off_t{sizeof(TraceRecord)} == 0, "no part of a slot is left behind");
    std::vector<TraceRecord> slots(static_cast<size_t>(size) / sizeof(TraceRecord));
    require(pread(file, slots.data(), static_cast<size_t>(size), 0) == size, "the file is read");
    std::vector<uint64_t> numbers;
    for (const TraceRecord& slot : slots) {
        require(slot.reserved == 0, "the reserved word is 0");
        if (slot.debugid != kDivisorMarker) numbers.push_back(slot.timestamp);
    }
    return numbers;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("trace", MFD_CLOEXEC);
    require(ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0, "the file is empty");

    Input input(data, size);
    const auto outcomes = input.bytes(input.number<uint8_t>());
    Disk current{.outcomes = Input(outcomes.data(), outcomes.size())};
    uint64_t count = 0;
    {
        RawWriter writer(fcntl(file, F_DUPFD_CLOEXEC, 0), {.lost = noteLost, .goesOn = goOn});
        disk = &current;
        count = use(writer, input);
    }
    disk = nullptr;

    const std::vector<uint64_t> stored = storedIn(file);
    require(std::ranges::is_sorted(stored), "slots are in order");
    require(std::ranges::is_sorted(current.lost), "losses are in order");
    std::vector<uint64_t> all;
    std::ranges::merge(stored, current.lost, std::back_inserter(all));
    require(all.size() == count, "each record is stored or lost");
    for (uint64_t number = 1; number <= count; ++number) {
        require(all[number - 1] == number, "and none twice");
    }
    return 0;
}
