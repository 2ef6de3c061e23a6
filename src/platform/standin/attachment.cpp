// Opens and checks the folder and the state file, and keeps the locks on the latter.

#include "platform/standin/attachment.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "platform/standin/descriptor.h"
#include "platform/standin/lost_pages.h"
#include "platform/standin/notice.h"
#include "platform/steady_time.h"

namespace sonaprobe::standin {
namespace {

constexpr const char* kStateName = "state";
constexpr const char* kNewStateName = "state.new";  // left behind by a creator that was killed

// Bytes of the state file that are locked. These are locks of the process, not of the descriptor:
// a child does not inherit them, and the kernel knows who holds one. They would end with the
// first close of the file in this process, so it is opened once.
constexpr off_t kOperationByte = 0;
constexpr off_t kOwnerByte = 1;

// Nanoseconds.
constexpr int64_t kLookHolds = 100'000'000;   // how long Look::ifOld trusts a look
constexpr int64_t kLongWait = 1'000'000'000;  // by then the holder of a lock is told
constexpr int64_t kBrokenWait = 200'000'000;  // where a signal breaks it off, by then

struct Attachment {
    Descriptor folder;
    Descriptor file;
    State* state = nullptr;
    dev_t device = 0;
    ino_t inode = 0;
    pid_t ownedBy = 0;  // the process that last took ownership; a forked child differs
    int64_t lookedAt = 0;
};
Attachment attachment;
uint64_t lookCount = 0;
std::mutex attachmentMutex;

constexpr Refusal kNoRefusal{"", ""};
thread_local Refusal refusal = kNoRefusal;

struct flock lockOf(off_t byte, short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

// Takes or gives up a byte's lock, without waiting.
bool setLock(off_t byte, short type) {
    const struct flock lock = lockOf(byte, type);
    return fcntl(attachment.file.number(), F_SETLK, &lock) == 0;
}

// The other process that has the byte's lock, 0 where it is out of this one's sight.
std::optional<pid_t> holderOf(off_t byte) {
    struct flock lock = lockOf(byte, F_WRLCK);
    const bool asked = fcntl(attachment.file.number(), F_GETLK, &lock) == 0;
    if (!asked || lock.l_type == F_UNLCK) return {};
    return lock.l_pid;
}

// All signals of this thread are held up as long as one exists, but while it sleeps: none comes
// between a look at the lock and the sleep, unnoticed.
class Sleeper {
  public:
    Sleeper() { holdSignals(); }
    ~Sleeper() { releaseSignals(); }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    void holdSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    void releaseSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

    // Sleeps longer each time, up to a millisecond. False once a handled signal came.
    bool sleep() {
        constexpr long kLongest = 1'000'000;
        nanoseconds_ = std::min(2 * nanoseconds_, kLongest);
        const timespec time{.tv_sec = 0, .tv_nsec = nanoseconds_};
        return pselect(0, nullptr, nullptr, nullptr, &time, &before_) == 0;
    }

  private:
    sigset_t before_{};
    long nanoseconds_ = 5'000;
};

// Waits until `take` has got its lock. False with errno where the kernel refuses, and EINTR where
// a handled signal came: to wait on is its program's decision. The holder is told of if that took
// long; the kernel's own waiting calls know neither, and go on after a signal.
template <class Take, class Holder>
bool waitToTake(Take take, Holder holder) {
    if (take()) return true;
    Sleeper sleeper;
    const int64_t begin = steadyNanoseconds();
    while (errno == EAGAIN || errno == EACCES) {
        const bool goesOn = sleeper.sleep();
        const int64_t waited = steadyNanoseconds() - begin;
        if (waited > (goesOn ? kLongWait : kBrokenWait)) {
            sleeper.releaseSignals();  // standard error may be stuck
            tellHolder(holder());
            sleeper.holdSignals();
        }
        if (!goesOn) {
            errno = EINTR;
            return false;
        }
        if (take()) return true;
    }
    return false;
}

// Moves a descriptor kept for long off the standard streams' numbers, which are free where the
// program was started with them closed: what it prints would land in the file.
Descriptor awayFromStreams(Descriptor file) {
    if (!file || file.number() > STDERR_FILENO) return file;
    return Descriptor(fcntl(file.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

// Makes the folder if there is none and opens it. None with errno where that fails.
Descriptor openFolder() {
    if (mkdir(kFolder, 0700) != 0 && errno != EEXIST) return {};
    Descriptor folder =
        awayFromStreams(Descriptor(open(kFolder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)));
    if (!folder) {
        if (errno == ENOTDIR || errno == ELOOP) errno = refuse(kFolder, "is not a folder");
        return folder;
    }
    struct stat found {};
    const bool looked = fstat(folder.number(), &found) == 0;
    const char* flaw = looked ? flawOf(found, S_IFDIR) : "cannot be looked at";
    if (flaw == nullptr) return folder;
    errno = refuse(kFolder, flaw);
    return {};
}

Descriptor openState(int folder) {
    return awayFromStreams(
        Descriptor(openat(folder, kStateName, O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK)));
}

// Gives a state file its length and the content after boot. Errno, or 0.
int fillFreshState(int file) {
    State fresh{};
    fresh.magic = kStateMagic;
    fresh.size = sizeof(State);
    fresh.interest.publish(wordsOf(kEverything));
    const int error = posix_fallocate(file, 0, sizeof(State));
    if (error != 0) return error;
    return pwrite(file, &fresh, sizeof(State), 0) == ssize_t{sizeof(State)} ? 0 : EIO;
}

// Writes a fresh state under another name and gives it its own when complete. Errno, or 0.
int writeFreshState(int folder) {
    unlinkat(folder, kNewStateName, 0);
    const Descriptor file(
        openat(folder, kNewStateName, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) return errno;
    int error = fillFreshState(file.number());
    if (error == 0 && renameat(folder, kNewStateName, folder, kStateName) != 0) error = errno;
    if (error != 0) unlinkat(folder, kNewStateName, 0);
    return error == ENOSPC ? ENOMEM : error;
}

// One process makes the state; the others wait for it at the folder's lock, which ends with its
// holder. None with errno where that fails.
Descriptor openOrMakeState(const Descriptor& folder) {
    Descriptor file = openState(folder.number());
    if (file || errno != ENOENT) return file;
    // The lock is that of the open folder: closed, it is given up.
    const Descriptor locked(openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto take = [&] { return flock(locked.number(), LOCK_EX | LOCK_NB) == 0; };
    if (!locked || !waitToTake(take, [] { return pid_t{0}; })) return {};
    file = openState(folder.number());
    if (file || errno != ENOENT) return file;
    const int error = writeFreshState(folder.number());
    if (error == 0) return openState(folder.number());
    errno = error;
    return {};
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
    guardMapping(state, sizeof(State));
    if (state->magic == kStateMagic && state->size == sizeof(State)) return state;
    releaseMapping(state);
    munmap(mapped, sizeof(State));
    errno = refuse(kStatePath, "has a wrong header");
    return nullptr;
}

// Looks at the names again, since anybody with root's rights may have replaced what they stand
// for. Sets errno when it must be refused.
enum class Standing { same, gone, cutShort, refused };
Standing lookAgain() {
    struct stat folder {};
    struct stat file {};
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
    const bool whole = file.st_size == off_t{sizeof(State)} && !hasLostPages(attachment.state);
    return whole ? Standing::same : Standing::cutShort;
}

// Brings a state that was cut short while it was mapped back to what it is after boot, unless
// another process was faster, and maps it anew. False with errno where that fails.
bool renewState() {
    tellCutShort(kStatePath);
    if (!lockOperations()) return false;
    const int file = attachment.file.number();
    struct stat found {};
    int error = fstat(file, &found) != 0 ? errno : 0;
    if (error == 0 && found.st_size != off_t{sizeof(State)}) {
        error = ftruncate(file, off_t{sizeof(State)}) != 0 ? errno : fillFreshState(file);
    }
    State* const state = error == 0 ? mapState(file, found) : nullptr;
    if (error == 0 && state == nullptr) error = errno;
    unlockOperations();
    if (error == 0) attachment.state = state;  // producers may still use the former mapping
    errno = error;
    return error == 0;
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
    refusal = kNoRefusal;
    const int64_t time = steadyNanoseconds();
    if (attachment.state != nullptr) {
        const bool fresh = time - attachment.lookedAt < kLookHolds;
        if (look == Look::ifOld && fresh) return attachment.state;
        ++lookCount;
        attachment.lookedAt = 0;
        switch (lookAgain()) {
            case Standing::same: attachment.lookedAt = time; return attachment.state;
            case Standing::refused: return nullptr;
            case Standing::cutShort: return renewState() ? attachment.state : nullptr;
            case Standing::gone: attachment = Attachment{};
        }
    }
    if (geteuid() != 0) {
        errno = refuse(kFolder, "is open to root alone");
        return nullptr;
    }
    Descriptor folder = openFolder();
    if (!folder) return nullptr;
    Descriptor file = openOrMakeState(folder);
    struct stat found {};
    State* state = nullptr;
    if (file) {
        state = mapState(file.number(), found);
    } else if (errno == ELOOP) {
        errno = refuse(kStatePath, "is a link");
    } else if (errno == EISDIR || errno == ENXIO) {
        errno = refuse(kStatePath, "is not a plain file");
    }
    if (state == nullptr) return nullptr;
    ++lookCount;
    attachment = {.folder = std::move(folder),
                  .file = std::move(file),
                  .state = state,
                  .device = found.st_dev,
                  .inode = found.st_ino,
                  .lookedAt = time};
    return state;
}

uint64_t looks() { return lookCount; }

int folderDescriptor() { return attachment.folder.number(); }

bool lockOperations() {
    return waitToTake([] { return setLock(kOperationByte, F_WRLCK); },
                      [] { return holderOf(kOperationByte).value_or(0); });
}

void unlockOperations() { setLock(kOperationByte, F_UNLCK); }

bool takeOwnership() {
    if (!setLock(kOwnerByte, F_WRLCK)) return false;
    attachment.ownedBy = getpid();
    return true;
}

void giveUpOwnership() {
    setLock(kOwnerByte, F_UNLCK);
    attachment.ownedBy = 0;
}

bool ownedHere() { return attachment.ownedBy == getpid(); }

std::optional<pid_t> owner() {
    if (ownedHere()) return attachment.ownedBy;
    return holderOf(kOwnerByte);
}

}  // namespace sonaprobe::standin
