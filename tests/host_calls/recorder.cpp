// A kernel that is played from a script: the four platform calls, and the two of the C library
// that a test must be able to steer (geteuid and malloc). Each call but geteuid is written to the
// file RECORDER_LOG as one line, before it is answered as the file RECORDER_SCRIPT says:
//
//   euid ID                     whom geteuid answers (0)
//   timebase NUMER DENOM        what mach_timebase_info answers (125 3)
//   flags FLAGS                 the audio debug flags, whatever is set (0)
//   info ENTRIES NOLOG FLAGS THREADS BUFID
//                               one a KERN_KDGETBUF, in turn; the last one stays
//   read COUNT FILE             one a KERN_KDREADTR, in turn: as much of the file as there is room
//                               for, and COUNT as the number of records; later reads answer 0
//   fail NTH ERRNO CALL         the NTH call whose line begins with CALL fails; NTH 0: every one
//   raise NTH SIGNAL CALL       it is answered once the signal was raised
//
// A line holds the words of the name, the length of the old buffer and, if that is short, the words
// in it, then the same of the new value; "-> error N" where the call was made to fail.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "platform/platform.h"

namespace {

using namespace sonaprobe::platform;

struct Read {
    size_t count;
    std::string bytes;
};

struct Rule {
    bool raises;  // a signal; else it fails with an errno
    int nth;
    int number;
    std::string call;
    int seen = 0;
};

struct Script {
    unsigned euid = 0;
    mach_timebase_info_data_t timebase{125, 3};
    uint32_t flags = 0;
    std::vector<KernelBufferInfo> infos;
    std::vector<Read> reads;
    std::vector<Rule> rules;
};

const char* variable(const char* name) {
    const char* const value = std::getenv(name);
    if (value != nullptr) return value;
    std::fprintf(stderr, "recorder: %s is not set\n", name);
    std::abort();
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string restOf(std::istream& line) {
    std::string rest;
    std::getline(line >> std::ws, rest);
    return rest;
}

void take(Script& script, std::istream& line) {
    std::string word;
    line >> word;
    if (word == "euid") {
        line >> script.euid;
    } else if (word == "timebase") {
        line >> script.timebase.numer >> script.timebase.denom;
    } else if (word == "flags") {
        line >> script.flags;
    } else if (word == "info") {
        KernelBufferInfo info{};
        line >> info.entries >> info.nolog >> info.flags >> info.threads >> info.bufid;
        script.infos.push_back(info);
    } else if (word == "read") {
        int64_t count = 0;
        line >> count;
        script.reads.push_back({static_cast<size_t>(count), contentsOf(restOf(line))});
    } else if (word == "fail" || word == "raise") {
        Rule rule{.raises = word == "raise", .nth = 0, .number = 0, .call = {}};
        line >> rule.nth >> rule.number;
        rule.call = restOf(line);
        script.rules.push_back(rule);
    }
    if (line.fail()) {
        std::fprintf(stderr, "recorder: a bad line of the script: %s\n", word.c_str());
        std::abort();
    }
}

Script& script() {
    static Script loaded = [] {
        Script made;
        std::ifstream file(variable("RECORDER_SCRIPT"));
        for (std::string text; std::getline(file, text);) {
            std::istringstream line(text);
            take(made, line);
        }
        return made;
    }();
    return loaded;
}

void log(const std::string& line) {
    static const int file = open(variable("RECORDER_LOG"), O_WRONLY | O_APPEND | O_CLOEXEC);
    const std::string text = line + "\n";
    if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
}

// The length of a buffer, and its words if they are few.
std::string described(const char* what, const void* bytes, size_t length) {
    constexpr size_t kShort = 20;
    std::ostringstream text;
    text << ' ' << what << ' ' << length;
    if (length == 0 || length > kShort) return text.str();
    text << ':' << std::hex << std::showbase;
    for (size_t i = 0; i + sizeof(uint32_t) <= length; i += sizeof(uint32_t)) {
        uint32_t word;
        std::memcpy(&word, static_cast<const char*>(bytes) + i, sizeof word);
        text << ' ' << word;
    }
    return text.str();
}

std::string describedOld(const void* old, const size_t* oldLength) {
    if (old == nullptr && oldLength == nullptr) return {};
    return oldLength != nullptr ? described("old", old, *oldLength) : " old without length";
}

std::string describedNew(const void* newValue, size_t newLength) {
    if (newValue == nullptr && newLength == 0) return {};
    return described("new", newValue, newLength);
}

// Logs the call and applies the rules: 0, or the errno to fail with.
int record(const std::string& line) {
    int error = 0;
    int signal = 0;
    for (Rule& rule : script().rules) {
        if (!line.starts_with(rule.call)) continue;
        ++rule.seen;
        if (rule.nth != 0 && rule.nth != rule.seen) continue;
        (rule.raises ? signal : error) = rule.number;
    }
    log(error == 0 ? line : line + " -> error " + std::to_string(error));
    if (signal != 0) raise(signal);
    return error;
}

int answer(int error) {
    if (error == 0) return 0;
    errno = error;
    return -1;
}

// The next entry of a list, which is used up; `last` where none is left.
template <class Entry>
Entry next(std::vector<Entry>& entries, const Entry& last) {
    if (entries.empty()) return last;
    const Entry entry = entries.front();
    entries.erase(entries.begin());
    return entry;
}

void answerInfo(void* old) {
    static KernelBufferInfo last{};
    last = next(script().infos, last);
    std::memcpy(old, &last, sizeof last);
}

void answerRead(void* old, size_t* oldLength) {
    const Read read = next(script().reads, Read{});
    std::memcpy(old, read.bytes.data(), std::min(read.bytes.size(), *oldLength));
    *oldLength = read.count;
}

}  // namespace

int sysctl(int* name, u_int nameLength, void* old, size_t* oldLength, void* newValue,
           size_t newLength) {
    std::string line = "sysctl";
    for (u_int i = 0; i < nameLength; ++i) line += ' ' + std::to_string(name[i]);
    line += describedOld(old, oldLength) + describedNew(newValue, newLength);
    if (const int error = record(line); error != 0) return answer(error);
    if (name[2] == kKernKdGetBuf) answerInfo(old);
    if (name[2] == kKernKdReadTr) answerRead(old, oldLength);
    return 0;
}

int sysctlbyname(const char* name, void* old, size_t* oldLength, void* newValue, size_t newLength) {
    std::string line = "sysctlbyname ";
    line += name + describedOld(old, oldLength) + describedNew(newValue, newLength);
    if (const int error = record(line); error != 0) return answer(error);
    if (old != nullptr) {
        const AudioDebugFlagsRequest reply{kAudioDebugMagic, kAudioFlagsGet, script().flags};
        std::memcpy(old, &reply, sizeof reply);
    }
    return 0;
}

int mach_timebase_info(mach_timebase_info_t info) {
    if (const int error = record("mach_timebase_info"); error != 0) return answer(error);
    *info = script().timebase;
    return 0;
}

int reexec_to_match_kernel() { return answer(record("reexec_to_match_kernel")); }

// The linker gives the program these for its own geteuid and malloc.
extern "C" {
void* __real_malloc(size_t size);

uid_t __wrap_geteuid() { return script().euid; }

void* __wrap_malloc(size_t size) {
    if (const int error = record("malloc " + std::to_string(size)); error != 0) {
        errno = error;
        return nullptr;
    }
    return __real_malloc(size);
}
}
