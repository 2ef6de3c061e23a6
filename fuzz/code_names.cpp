// The code-name file: any bytes name the codes that a plain scan from the start finds, and no
// others.

#include "probe/code_names.h"

#include <map>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "fuzz.h"
#include "probe/settings.h"

using namespace sonaprobe;
using fuzz::require;

// The clock by which a look at the file grows old: a second a look.
extern "C" {
int __real_clock_gettime(clockid_t clock, timespec* time);

int __wrap_clock_gettime(clockid_t clock, timespec* time) {
    if (clock != CLOCK_MONOTONIC_COARSE) return __real_clock_gettime(clock, time);
    static time_t looks = 0;
    *time = {.tv_sec = ++looks, .tv_nsec = 0};
    return 0;
}
}

namespace {

// The name that a line, or a piece of one, gives to a code.
void takePiece(std::string piece, std::map<unsigned long, std::string>& names) {
    char* rest = piece.data();
    const unsigned long code = std::strtoul(strsep(&rest, "\t "), nullptr, 0);
    std::string name = rest != nullptr ? rest : "";
    name = name.substr(0, name.find('\n'));
    const auto blanks = std::ranges::count_if(name, [](char c) { return c == '\t' || c == ' '; });
    names.try_emplace(code, name.substr(static_cast<size_t>(blanks)));
}

std::map<unsigned long, std::string> scan(std::span<const uint8_t> bytes) {
    std::map<unsigned long, std::string> names;
    std::string piece;
    for (const uint8_t byte : bytes) {
        piece += static_cast<char>(byte);
        if (byte != '\n' && piece.size() < kCodeNameRoom - 1) continue;
        takePiece(piece, names);
        piece.clear();
    }
    if (!piece.empty()) takePiece(piece, names);
    return names;
}

// The one file of all inputs: each is a change of it.
void fill(std::span<const uint8_t> bytes) {
    static const int file = memfd_create("codes", MFD_CLOEXEC);
    static time_t changes = 0;
    if (settings.decodeFile == nullptr) settings.decodeFile = fdopen(file, "r");
    const auto length = static_cast<ssize_t>(bytes.size());
    const timespec modified{.tv_sec = ++changes, .tv_nsec = 0};
    const timespec times[] = {modified, modified};
    require(settings.decodeFile != nullptr && ftruncate(file, 0) == 0 &&
                pwrite(file, bytes.data(), bytes.size(), 0) == length && futimens(file, times) == 0,
            "the file can be written");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fill({data, size});
    const auto names = scan({data, size});
    size_t looked = 0;
    for (const auto& [code, name] : names) {
        if (code > UINT32_MAX || ++looked > 32) break;
        char room[kCodeNameRoom] = {};
        const char* const found = lookupCodeName(static_cast<uint32_t>(code), room);
        require(found != nullptr && found == name, "a code has the first name of it in the file");
    }
    for (const uint32_t code : {0U, 4U, 0x01300004U, 0xFFFFFFFFU}) {
        char room[kCodeNameRoom] = {};
        require((lookupCodeName(code, room) == nullptr) == !names.contains(code),
                "a code that the file does not name has no name");
    }
    return 0;
}
