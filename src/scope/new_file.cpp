// Writes beside the final name and renames.

#include "scope/new_file.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "analysis/spelled.h"
#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// What a signal that ends the program removes; empty where there is nothing.
std::array<char, PATH_MAX> leftover{};

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};

void removeAndEnd(int signal) {
    unlink(leftover.data());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void removeOnSignals(const std::string& path) {
    if (path.size() >= leftover.size()) return;
    std::memcpy(leftover.data(), path.c_str(), path.size() + 1);
    for (const int signal : kEndingSignals) {
        // One that is ignored, as under nohup, stays ignored.
        if (std::signal(signal, removeAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

void forgetOnSignals() {
    for (const int signal : kEndingSignals) {
        if (std::signal(signal, SIG_DFL) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

// The open file of a new name, or -1. A signal waits until the file is one that it removes.
int makeRemovedOnSignals(std::string& name) {
    sigset_t ending{};
    sigset_t before{};
    sigemptyset(&ending);
    for (const int signal : kEndingSignals) sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before);
    const int file = mkstemp(name.data());
    const int error = errno;
    if (file >= 0) removeOnSignals(name);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return file;
}

// Where a symbolic link points to, or the path itself.
std::string targetOf(const std::string& path) {
    char target[PATH_MAX];
    return realpath(path.c_str(), target) != nullptr ? target : path;
}

// An id in the environment, as sudo leaves it.
std::optional<unsigned> idNamed(const char* name) {
    const char* const text = std::getenv(name);
    if (text == nullptr) return std::nullopt;
    const std::optional<uint64_t> id = spelledNumber(text);
    if (!id || *id >= std::numeric_limits<unsigned>::max()) return std::nullopt;
    return static_cast<unsigned>(*id);
}

// Whether root's new file could be given to the user who called sudo, if one did.
bool giveToCaller(int file) {
    const auto user = idNamed("SUDO_UID");
    const auto group = idNamed("SUDO_GID");
    if (geteuid() != 0 || !user || !group) return true;
    return fchown(file, *user, *group) == 0;
}

mode_t usualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

NewFile::NewFile(const std::string& path, bool force, const FileBytes* input, For whom)
    : path_(targetOf(path)),
      name_(escaped(path)),
      force_(force),
      removedOnSignals_(whom == For::everyone) {
    struct stat status {};
    if (stat(path_.c_str(), &status) == 0) {
        if (input != nullptr && input->isFileOf(path_)) {
            throw Failure{name_ + " is the input itself; give another name to write to"};
        }
        if (!S_ISREG(status.st_mode)) {
            throw Failure{name_ + " is no regular file; give another name to write to"};
        }
        if (!force) {
            throw Failure{name_ + " exists; give " +
                          (whom == For::everyone ? "--force to write over it" : "another name")};
        }
    }
    temporary_ = path_ + ".XXXXXX";
    file_ = removedOnSignals_ ? makeRemovedOnSignals(temporary_) : mkstemp(temporary_.data());
    if (file_ < 0) throw systemFailure("could not write " + name_);
    if (whom == For::everyone) {
        fchmod(file_, usualMode());
    } else if (!giveToCaller(file_)) {
        const int error = errno;
        remove();
        errno = error;
        throw systemFailure("could not write " + name_);
    }
}

NewFile::~NewFile() {
    if (file_ < 0) return;
    remove();
}

void NewFile::remove() {
    close(file_);
    unlink(temporary_.c_str());
    if (removedOnSignals_) forgetOnSignals();
}

void NewFile::write(std::span<const std::byte> bytes) {
    gathered_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (gathered_.size() >= kGathered) flush();
}

void NewFile::flush() {
    for (std::string_view rest = gathered_; !rest.empty();) {
        const ssize_t written = ::write(file_, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw systemFailure("could not write " + name_);
        rest.remove_prefix(static_cast<size_t>(written));
    }
    gathered_.clear();
}

const std::string& NewFile::written() {
    flush();
    if (ftruncate(file_, lseek(file_, 0, SEEK_CUR)) != 0) {
        throw systemFailure("could not write " + name_);
    }
    return temporary_;
}

void NewFile::startOver() {
    flush();
    lseek(file_, 0, SEEK_SET);
}

void NewFile::keep() {
    written();
    // A name must not stand for data that a power cut could still take.
    if (fsync(file_) != 0) throw systemFailure("could not write " + name_);
    // Unlike a renamed one, a linked file takes no place that somebody has taken meanwhile. Some
    // file systems have no links.
    const bool linked = !force_ && link(temporary_.c_str(), path_.c_str()) == 0;
    const bool taken = !force_ && !linked && errno == EEXIST;
    if (taken || (!linked && rename(temporary_.c_str(), path_.c_str()) != 0)) {
        throw systemFailure("could not write " + name_);
    }
    if (linked) unlink(temporary_.c_str());
    close(file_);
    file_ = -1;
    if (removedOnSignals_) forgetOnSignals();
}

}  // namespace sonaprobe::scope
