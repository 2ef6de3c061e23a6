// The stand-in's shared memory as a dying process may leave it: any bytes in the state and in the
// ring. No operation crashes or hangs, none hands out more than there is room for, and a reset
// leads to a facility that works.

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

#include "fuzz.h"
#include "platform/standin/attachment.h"
#include "platform/standin/facility.h"
#include "platform/standin/producer.h"

using namespace sonaprobe;
using namespace sonaprobe::standin;
using fuzz::Input;
using fuzz::require;

// A read waits 100 ms for records whose tickets are drawn: two looks at this clock.
std::chrono::steady_clock::time_point fakeNow() asm("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");

std::chrono::steady_clock::time_point fakeNow() {
    static std::chrono::milliseconds time{0};
    time += std::chrono::milliseconds(50);
    return std::chrono::steady_clock::time_point(time);
}

namespace {

constexpr uint32_t kEntries = 32;
constexpr size_t kRoom = 48;
constexpr int kSkipped = 77;

// Leaves the machine's own facility alone.
void takePrivateShm() {
    if (geteuid() == 0 && unshare(CLONE_NEWNS) == 0 &&
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
        mount("none", "/dev/shm", "tmpfs", 0, "size=2m") == 0) {
        return;
    }
    std::fputs("no right to a /dev/shm of its own\n", stderr);
    std::exit(kSkipped);
}

bool postOne(Producer& producer, uint32_t debugid) {
    return attachProducer(producer) && post(producer, {1, 2, 3, 4, 5, 6, debugid});
}

void setUpAndUse(Producer& producer) {
    require(resetFacility() == 0 && setBufferSize(kEntries) == 0 && setUp() == 0 &&
                enableTracing(true) == 0,
            "a facility that was reset can be set up");
    for (uint32_t i = 0; i < 5; ++i) require(postOne(producer, i), "it takes records");
    std::vector<unsigned char> records(2 * kSlotBytes);
    uint64_t count = 0;
    require(readRecords(records.data(), 2, count) == 0 && count == 2, "and hands them out");
}

// Writes over the state after its header, or over the ring.
void damage(Input& input) {
    auto offset = size_t{input.number<uint16_t>()};
    const auto bytes = input.bytes(1 + input.number<uint8_t>() % 16);
    constexpr size_t kHeader = 2 * sizeof(uint64_t);
    if ((offset & 0x8000) == 0) {
        const auto hold = holdAttachment();
        State* const state = attach();
        if (state == nullptr) return;
        offset = kHeader + offset % (sizeof(State) - kHeader);
        const size_t size = std::min(bytes.size(), sizeof(State) - offset);
        std::memcpy(reinterpret_cast<char*>(state) + offset, bytes.data(), size);
        return;
    }
    const int ring = open(kRingPath, O_WRONLY | O_CLOEXEC);
    if (ring < 0) return;
    offset = offset % (sizeof(RingHeader) + kEntries * kSlotBytes);
    if (offset >= sizeof(RingHeader)) offset += kRingHeaderBytes - sizeof(RingHeader);
    const ssize_t written = pwrite(ring, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    require(written == static_cast<ssize_t>(bytes.size()), "the ring can be written");
    close(ring);
}

void readSome(size_t room) {
    std::vector<unsigned char> records(room * kSlotBytes);
    uint64_t count = 0;
    const int error = readRecords(records.data(), room, count);
    require(error != 0 || count <= room, "a read hands out what there is room for");
}

void operate(Input& input, Producer& producer) {
    platform::KernelBufferInfo info{};
    FacilityStatus status{};
    uint32_t flags = 0;
    const auto value = input.number<uint8_t>();
    switch (value >> 4) {
        case 0: damage(input); break;
        case 1: getBufferInfo(info); break;
        case 2: getAudioFlags(flags); break;
        case 3: setAudioFlags(value); break;
        case 4: setBufferSize(input.number<uint32_t>()); break;
        case 5: setInterest({input.number<uint32_t>(), 0, value, 0, 0}); break;
        case 6: setUp(); break;
        case 7: enableTracing((value & 1) != 0); break;
        case 8:
        case 9: readSome(value % kRoom); break;
        case 10: removeBuffer(); break;
        case 11:
            if (getStatus(status) == 0) {
                require(status.pending <= static_cast<uint64_t>(status.info.entries),
                        "what is pending has a slot");
                require(status.lost + status.pending <= status.posted, "posted = seen + the rest");
            }
            break;
        default:
            for (int i = value & 0x3F; i >= 0; --i) postOne(producer, value);
            break;
    }
}

void requireWayBack(Producer& producer) {
    if (resetFacility() == EPERM) {
        require(std::strcmp(lastRefusal().path, kRingPath) == 0, "the ring alone is not trusted");
        unlink(kRingPath);
    }
    setUpAndUse(producer);
    FacilityStatus status{};
    require(getStatus(status) == 0 && status.posted == 5 && status.pending == 3 && status.lost == 0,
            "its counts are right");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool ready = (takePrivateShm(), true);
    static Producer producer;
    Input input(data, size);
    setUpAndUse(producer);
    while (ready && !input.atEnd()) operate(input, producer);
    requireWayBack(producer);
    return 0;
}
