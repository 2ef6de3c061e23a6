// Makes, maps and removes ring files.

#include "platform/standin/ring.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include "platform/standin/attachment.h"
#include "platform/standin/descriptor.h"
#include "platform/standin/lost_pages.h"

namespace sonaprobe::standin {
namespace {

constexpr const char* kRingName = "ring";

constexpr uint64_t bytesOf(uint64_t entries) { return kRingHeaderBytes + entries * kSlotBytes; }

constexpr uint64_t entriesIn(uint64_t bytes) {
    return bytes < kRingHeaderBytes ? 0 : (bytes - kRingHeaderBytes) / kSlotBytes;
}

// How many slots to try for, of those wanted, with the room there is now.
uint64_t affordable(int file, uint64_t wanted) {
    struct statfs system {};
    // A file system without a limit of its own reports no blocks at all.
    if (fstatfs(file, &system) != 0 || system.f_blocks == 0) return wanted;
    const uint64_t room = uint64_t{system.f_bavail} * static_cast<uint64_t>(system.f_bsize);
    return bytesOf(wanted) <= room ? wanted : std::min(wanted, entriesIn(room / 2));
}

// Reserves the first bytes of the file, step by step, as a signal breaks off a long reservation.
int reserve(int file, uint64_t bytes) {
    constexpr uint64_t kStep = 8 << 20;
    uint64_t done = 0;
    while (done < bytes) {
        const uint64_t step = std::min(kStep, bytes - done);
        const int error = posix_fallocate(file, static_cast<off_t>(done), static_cast<off_t>(step));
        if (error == 0) {
            done += step;
        } else if (error != EINTR) {
            return error;
        }
    }
    return 0;
}

// Checks the header and length of an open ring file, and sets entries.
int checkHeader(int file, const struct stat& found, uint16_t number, uint32_t& entries) {
    if (const char* flaw = flawOf(found, S_IFREG); flaw != nullptr) return refuse(kRingPath, flaw);
    RingHeader header{};
    if (pread(file, &header, sizeof header, 0) != ssize_t{sizeof header} ||
        header.magic != kRingMagic || header.entries == 0 ||
        header.entries > std::numeric_limits<int32_t>::max() ||
        static_cast<uint64_t>(found.st_size) != bytesOf(header.entries)) {
        return refuse(kRingPath, "has a wrong header");
    }
    entries = static_cast<uint32_t>(header.entries);
    return header.number == number ? 0 : ENOENT;
}

}  // namespace

int createRing(int folder, uint16_t number, uint32_t wanted, uint32_t& entries) {
    removeRing(folder);
    const uint64_t most = std::min<uint64_t>(wanted, std::numeric_limits<int32_t>::max());
    const uint64_t fewest = std::min<uint64_t>(kFewestEntries, most);
    uint64_t size = most;
    for (;;) {
        const Descriptor file(
            openat(folder, kRingName, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!file) return errno == ENOSPC ? ENOMEM : errno;
        size = affordable(file.number(), size);
        int error = size < fewest ? ENOSPC : reserve(file.number(), bytesOf(size));
        if (error == 0) {
            const RingHeader header{kRingMagic, number, size};
            const ssize_t put = pwrite(file.number(), &header, sizeof header, 0);
            if (put != ssize_t{sizeof header}) error = EIO;
        }
        if (error == 0) {
            entries = static_cast<uint32_t>(size);
            return 0;
        }
        removeRing(folder);
        if (error != ENOSPC) return error;
        // Somebody else took the room meanwhile: try for half of it.
        size /= 2;
        if (size < fewest) return ENOMEM;
    }
}

void removeRing(int folder) { unlinkat(folder, kRingName, 0); }

int mapRing(int folder, uint16_t number, Ring& ring) {
    unmapRing(ring);
    const Descriptor file(openat(folder, kRingName, O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!file) return errno == ELOOP ? refuse(kRingPath, "is a link") : errno;
    struct stat found {};
    if (fstat(file.number(), &found) != 0) return errno;
    uint32_t entries = 0;
    const int error = checkHeader(file.number(), found, number, entries);
    if (error != 0) return error;
    const auto bytes = static_cast<size_t>(bytesOf(entries));
    if (bytes != bytesOf(entries)) return ENOMEM;  // more than a 32-bit program can address
    void* base = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.number(), 0);
    if (base == MAP_FAILED) return errno;
    guardMapping(base, bytes);
    auto* slots = static_cast<uint64_t*>(base) + kRingHeaderBytes / sizeof(uint64_t);
    ring = {base, slots, entries, number, found.st_dev, found.st_ino};
    return 0;
}

void unmapRing(Ring& ring) {
    if (ring.entries != 0) {
        releaseMapping(ring.base);
        munmap(ring.base, static_cast<size_t>(bytesOf(ring.entries)));
    }
    ring = Ring{};
}

RingFile fileOf(int folder, const Ring& ring) {
    struct stat found {};
    if (fstatat(folder, kRingName, &found, AT_SYMLINK_NOFOLLOW) != 0 ||
        found.st_dev != ring.device || found.st_ino != ring.inode ||
        flawOf(found, S_IFREG) != nullptr) {
        return RingFile::another;
    }
    const bool whole = static_cast<uint64_t>(found.st_size) == bytesOf(ring.entries);
    return whole && !hasLostPages(ring.base) ? RingFile::inPlace : RingFile::cutShort;
}

}  // namespace sonaprobe::standin
