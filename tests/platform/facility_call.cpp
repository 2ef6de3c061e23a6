// A program for tests of other programs: makes the calls named on its command line, one after
// another, as a tool of its own would, and prints what each answers.
//
//     facility-call setbuf=1024 setup enable=1 read remove

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "record/trace_record.h"

namespace {

using namespace sonaprobe;
using namespace sonaprobe::platform;

constexpr std::size_t kMostRead = 100'000;

int operate(std::vector<int> words, void* old = nullptr, size_t* oldLength = nullptr) {
    std::vector<int> name{kCtlKern, kKernKdebug};
    name.insert(name.end(), words.begin(), words.end());
    return sysctl(name.data(), static_cast<unsigned>(name.size()), old, oldLength, nullptr, 0);
}

// A line a record, in hexadecimal: debug id, argument 1, time stamp.
int readAndPrint() {
    std::vector<TraceRecord> records(kMostRead);
    size_t length = records.size() * sizeof(TraceRecord);
    const int result = operate({kKernKdReadTr}, records.data(), &length);
    if (result != 0) return result;
    records.resize(length);
    for (const TraceRecord& record : records) {
        std::printf("record %" PRIx32 " %" PRIx64 " %" PRIx64 "\n", record.debugid, record.arg1,
                    record.timestamp);
    }
    return 0;
}

int getBuf() {
    KernelBufferInfo info{};
    size_t length = sizeof info;
    return operate({kKernKdGetBuf}, &info, &length);
}

// All debug ids of a class and subclass byte: 0x524 for 05 and 24.
int setReg(uint32_t value) {
    TraceInterest interest{kInterestSubclass, value >> 8, value & 0xFF, 0, 0};
    size_t length = sizeof interest;
    return operate({kKernKdSetReg}, &interest, &length);
}

int audio(uint32_t operation, uint32_t value) {
    AudioDebugFlagsRequest request{kAudioDebugMagic, operation, value};
    AudioDebugFlagsRequest reply{};
    size_t length = sizeof reply;
    const bool get = operation == kAudioFlagsGet;
    return sysctlbyname("debug.Audio", get ? &reply : nullptr, get ? &length : nullptr, &request,
                        sizeof request);
}

int makeCall(const std::string& name, uint32_t value) {
    if (name == "enable") return operate({kKernKdEnable, static_cast<int>(value)});
    if (name == "setbuf") return operate({kKernKdSetBuf, static_cast<int>(value)});
    if (name == "getbuf") return getBuf();
    if (name == "setup") return operate({kKernKdSetup});
    if (name == "remove") return operate({kKernKdRemove});
    if (name == "setreg") return setReg(value);
    if (name == "read") return readAndPrint();
    if (name == "audio-get") return audio(kAudioFlagsGet, 0);
    if (name == "audio-set") return audio(kAudioFlagsSet, value);
    std::fprintf(stderr, "facility-call: no call named %s\n", name.c_str());
    std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; i++) {
        const std::string call = argv[i];
        const size_t equals = call.find('=');
        const std::string value = equals == std::string::npos ? "0" : call.substr(equals + 1);
        const std::string name = call.substr(0, equals);
        const int result = makeCall(name, static_cast<uint32_t>(std::stoul(value, nullptr, 0)));
        std::printf("%s: %s\n", name.c_str(), result == 0 ? "done" : std::strerror(errno));
    }
}
