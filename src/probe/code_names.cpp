// Lookup of code names: the file is scanned once and what a scan finds is remembered until the
// file changes.

#include "probe/code_names.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

#include "platform/coarse_clock.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/signals.h"

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

std::unordered_map<uint32_t, std::string> names;
FileState scannedState;
bool scanned = false;
int64_t lookedAt = 0;

// One line of the file, or one piece of a long line: the first to name a code keeps it.
void takePiece(char* piece) {
    char* rest = piece;
    const char* const token = strsep(&rest, "\t ");
    const unsigned long code = std::strtoul(token, nullptr, 0);
    if (code > std::numeric_limits<uint32_t>::max()) return;
    const char* name = rest != nullptr ? rest : "";
    if (rest != nullptr) {
        char* at = rest;
        for (; *at != '\0' && *at != '\n'; ++at) {
            if (*at == '\t' || *at == ' ') ++name;
        }
        *at = '\0';
    }
    names.try_emplace(static_cast<uint32_t>(code), name);
}

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
    char piece[kCodeNameRoom];
    size_t length = 0;
    const auto endPiece = [&] {
        piece[length] = '\0';
        takePiece(piece);
        length = 0;
    };
    names.clear();
    for (off_t offset = 0; !stream || offset < kStreamLimit;) {
        const ssize_t got = readBlock(file, stream, block, sizeof block, offset);
        if (got <= 0) break;
        offset += got;
        for (ssize_t i = 0; i < got; ++i) {
            piece[length++] = block[i];
            if (block[i] == '\n' || length == sizeof piece - 1) endPiece();
        }
    }
    if (length > 0) endPiece();
}

void refreshNames() {
    const int64_t time = coarseNanoseconds();
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

}  // namespace

const char* lookupCodeName(uint32_t code, char (&destination)[kCodeNameRoom]) {
    if (settings.decodeFile == nullptr) {
        std::fprintf(stderr, "Error opening file '%s'\n", settings.decodePath);
        return destination;
    }
    refreshNames();
    const auto found = names.find(code);
    if (found == names.end()) return nullptr;
    std::memcpy(destination, found->second.c_str(), found->second.size() + 1);
    return destination;
}

}  // namespace sonaprobe
