// The code-name file of --decode: it is scanned once, and what the scan finds is remembered until
// the file changes.

#include "probe/code_name_file.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

#include "lines/code_names.h"
#include "live/signals.h"
#include "platform/steady_time.h"
#include "probe/output.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

// How long a look at the file's state holds.
constexpr int64_t kFreshNanoseconds = 20'000'000;

// Where a pipe or device given as code-name file is taken to end.
constexpr off_t kStreamLimit = off_t{64} << 20;

// What tells one content of the open file from another.
struct FileState {
    off_t size = -1;
    timespec modified{};
    timespec changed{};

    bool operator==(const FileState& other) const {
        return size == other.size && same(modified, other.modified) && same(changed, other.changed);
    }
    static bool same(const timespec& one, const timespec& two) {
        return one.tv_sec == two.tv_sec && one.tv_nsec == two.tv_nsec;
    }
};

CodeNames names;
FileState scannedState;
bool scanned = false;
int64_t lookedAt = 0;

// Reads into `block` what the file has at `offset`; a stream has it where it stands.
ssize_t readBlock(int file, bool stream, char* block, size_t size, off_t offset) {
    for (;;) {
        const WaitingWindow window;
        const ssize_t got = stream ? ::read(file, block, size) : ::pread(file, block, size, offset);
        if (got >= 0 || errno != EINTR) return got;
    }
}

void scanFile(int file, bool stream) {
    char block[16384];
    names.clear();
    for (off_t offset = 0; !stream || offset < kStreamLimit;) {
        const ssize_t got = readBlock(file, stream, block, sizeof block, offset);
        if (got <= 0) break;
        offset += got;
        names.take(block, static_cast<size_t>(got));
    }
    names.endFile();
}

void refreshNames() {
    const int64_t time = steadyNanoseconds();
    if (scanned && time - lookedAt < kFreshNanoseconds) return;
    lookedAt = time;
    const int file = fileno(settings.decodeFile);
    struct stat status {};
    if (fstat(file, &status) != 0) return;
    const bool stream = !S_ISREG(status.st_mode);
    const FileState state{status.st_size, status.st_mtim, status.st_ctim};
    if (scanned && (stream || state == scannedState)) return;
    if (stream) flushOutput();
    scanFile(file, stream);
    scannedState = state;
    scanned = true;
}

const char* findName(const void*, uint32_t code) {
    if (settings.decodeFile == nullptr) {
        std::fprintf(stderr, "Error opening file '%s'\n", settings.decodePath);
        return "";
    }
    refreshNames();
    return names.nameOf(code);
}

}  // namespace

NameLookup codeNameLookup() {
    return settings.decodePath[0] == '\0' ? NameLookup{} : NameLookup{.find = findName};
}

}  // namespace sonaprobe
