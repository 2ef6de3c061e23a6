// Opens and checks the folder and the state file, and keeps the locks on the latter.

#include "platform/standin/attachment.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/coarse_clock.h"

namespace sonaprobe::standin {
namespace {

constexpr const char* kStateName = "state";
constexpr const char* kNewStateName = "state.new";  // left behind by a creator that was killed

// Bytes of the state file that are locked. These are locks of the process, not of the descriptor:
// a child does not inherit them, and the kernel knows who holds one. They would end with the
// first close of the file in this process, so it is opened once.
constexpr off_t kOperationByte = 0;
constexpr off_t kOwnerByte = 1;

// How long Look::ifOld trusts a look.
constexpr int64_t kLookHolds = 100'000'000;  // nanoseconds

struct Attachment {
    int folder = -1;
    int file = -1;
    State* state = nullptr;
    dev_t device = 0;
    ino_t inode = 0;
    pid_t ownedBy = 0;  // the process that last took ownership; a forked child differs
    int64_t lookedAt = 0;
};
Attachment attachment;
uint64_t lookCount = 0;
std::mutex attachmentMutex;

thread_local Refusal refusal{"", ""};

struct flock lockOf(off_t byte, short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

// Moves a descriptor kept for long off the standard streams' numbers, which are free where the
// program was started with them closed: what it prints would land in the file.
int awayFromStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(descriptor);
    errno = error;
    return moved;
}

// Makes the folder if there is none and opens it. The descriptor, or -1 with errno.
int openFolder() {
    if (mkdir(kFolder, 0700) != 0 && errno != EEXIST) return -1;
    const int folder =
        awayFromStreams(open(kFolder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder < 0) {
        if (errno == ENOTDIR || errno == ELOOP) errno = refuse(kFolder, "is not a folder");
        return -1;
    }
    struct stat found;
    const bool looked = fstat(folder, &found) == 0;
    const char* flaw = looked ? flawOf(found, S_IFDIR) : "cannot be looked at";
    if (flaw == nullptr) return folder;
    close(folder);
    errno = refuse(kFolder, flaw);
    return -1;
}

int openState(int folder) {
    return awayFromStreams(
        openat(folder, kStateName, O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
}

// Writes a fresh state under another name and gives it its own when complete. Errno, or 0.
int writeFreshState(int folder) {
    unlinkat(folder, kNewStateName, 0);
    const int file =
        openat(folder, kNewStateName, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) return errno;
    State fresh{};
    fresh.magic = kStateMagic;
    fresh.size = sizeof(State);
    fresh.interest.publish(wordsOf(kEverything));
    int error = posix_fallocate(file, 0, sizeof(State));
    if (error == 0 && pwrite(file, &fresh, sizeof(State), 0) != ssize_t{sizeof(State)}) {
        error = EIO;
    }
    close(file);
    if (error == 0 && renameat(folder, kNewStateName, folder, kStateName) != 0) error = errno;
    if (error != 0) unlinkat(folder, kNewStateName, 0);
    return error == ENOSPC ? ENOMEM : error;
}

// One process makes the state; the others wait for it at the folder's lock, which ends with its
// holder. The descriptor, or -1 with errno.
int openOrMakeState(int folder) {
    int file = openState(folder);
    if (file >= 0 || errno != ENOENT) return file;
    while (flock(folder, LOCK_EX) != 0) {
        if (errno != EINTR) return -1;
    }
    file = openState(folder);
    if (file < 0 && errno == ENOENT) {
        const int error = writeFreshState(folder);
        file = error == 0 ? openState(folder) : -1;
        if (error != 0) errno = error;
    }
    const int error = errno;
    flock(folder, LOCK_UN);
    errno = error;
    return file;
}

// Maps the state file once it checks out. Null with errno else.
State* mapState(int file, struct stat& found) {
    if (fstat(file, &found) != 0) return nullptr;
    if (const char* flaw = flawOf(found, S_IFREG); flaw != nullptr) {
        errno = refuse(kStatePath, flaw);
        return nullptr;
    }
    if (found.st_size != off_t{sizeof(State)}) {
        errno = refuse(kStatePath, "has a wrong length");
        return nullptr;
    }
    void* mapped = mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (mapped == MAP_FAILED) return nullptr;
    State* state = static_cast<State*>(mapped);
    if (state->magic == kStateMagic && state->size == sizeof(State)) return state;
    munmap(mapped, sizeof(State));
    errno = refuse(kStatePath, "has a wrong header");
    return nullptr;
}

// Looks at the names again, since anybody with root's rights may have replaced what they stand
// for. Sets errno when it must be refused.
enum class Standing { same, gone, refused };
Standing lookAgain() {
    struct stat folder;
    struct stat file;
    if (lstat(kFolder, &folder) != 0 || lstat(kStatePath, &file) != 0) return Standing::gone;
    if (const char* flaw = flawOf(folder, S_IFDIR); flaw != nullptr) {
        errno = refuse(kFolder, flaw);
        return Standing::refused;
    }
    if (file.st_dev != attachment.device || file.st_ino != attachment.inode) return Standing::gone;
    if (const char* flaw = flawOf(file, S_IFREG); flaw != nullptr) {
        errno = refuse(kStatePath, flaw);
        return Standing::refused;
    }
    return Standing::same;
}

void detach() {
    close(attachment.file);
    close(attachment.folder);
    attachment = Attachment{};
}

}  // namespace

const Refusal& lastRefusal() { return refusal; }

int refuse(const char* path, const char* reason) {
    refusal = {path, reason};
    return EPERM;
}

const char* flawOf(const struct stat& file, mode_t type) {
    if (S_ISLNK(file.st_mode)) return "is a link";
    if ((file.st_mode & S_IFMT) != type) {
        return type == S_IFDIR ? "is not a folder" : "is not a plain file";
    }
    if (file.st_uid != 0) return "belongs to another user";
    if ((file.st_mode & (S_IRWXG | S_IRWXO)) != 0) return "is open to other users";
    if (type == S_IFREG && file.st_nlink != 1) return "has another name";
    return nullptr;
}

std::unique_lock<std::mutex> holdAttachment() { return std::unique_lock(attachmentMutex); }

State* attach(Look look) {
    const int64_t time = coarseNanoseconds();
    if (attachment.state != nullptr) {
        const bool fresh = time - attachment.lookedAt < kLookHolds;
        if (look == Look::ifOld && fresh) return attachment.state;
        ++lookCount;
        attachment.lookedAt = 0;
        switch (lookAgain()) {
            case Standing::same: attachment.lookedAt = time; return attachment.state;
            case Standing::refused: return nullptr;
            case Standing::gone: detach();
        }
    }
    if (geteuid() != 0) {
        errno = refuse(kFolder, "is open to root alone");
        return nullptr;
    }
    const int folder = openFolder();
    if (folder < 0) return nullptr;
    const int file = openOrMakeState(folder);
    struct stat found;
    State* state = nullptr;
    if (file >= 0) {
        state = mapState(file, found);
    } else if (errno == ELOOP) {
        errno = refuse(kStatePath, "is a link");
    } else if (errno == EISDIR || errno == ENXIO) {
        errno = refuse(kStatePath, "is not a plain file");
    }
    if (state == nullptr) {
        const int error = errno;
        if (file >= 0) close(file);
        close(folder);
        errno = error;
        return nullptr;
    }
    ++lookCount;
    attachment = {.folder = folder,
                  .file = file,
                  .state = state,
                  .device = found.st_dev,
                  .inode = found.st_ino,
                  .lookedAt = time};
    return state;
}

uint64_t looks() { return lookCount; }

int folderDescriptor() { return attachment.folder; }

bool lockOperations() {
    struct flock lock = lockOf(kOperationByte, F_WRLCK);
    while (fcntl(attachment.file, F_SETLKW, &lock) != 0) {
        if (errno != EINTR) return false;
    }
    return true;
}

void unlockOperations() {
    struct flock lock = lockOf(kOperationByte, F_UNLCK);
    fcntl(attachment.file, F_SETLK, &lock);
}

bool takeOwnership() {
    struct flock lock = lockOf(kOwnerByte, F_WRLCK);
    if (fcntl(attachment.file, F_SETLK, &lock) != 0) return false;
    attachment.ownedBy = getpid();
    return true;
}

void giveUpOwnership() {
    struct flock lock = lockOf(kOwnerByte, F_UNLCK);
    fcntl(attachment.file, F_SETLK, &lock);
    attachment.ownedBy = 0;
}

bool ownedHere() { return attachment.ownedBy == getpid(); }

std::optional<pid_t> owner() {
    if (ownedHere()) return attachment.ownedBy;
    struct flock lock = lockOf(kOwnerByte, F_WRLCK);
    if (fcntl(attachment.file, F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return {};
    return lock.l_pid;
}

}  // namespace sonaprobe::standin
