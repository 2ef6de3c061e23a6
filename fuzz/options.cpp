// The command line: any arguments leave settings that the program can work with, the same ones each
// time, and --verbose changes nothing but what is said.
//
// An input is the arguments, with a zero byte after each but the last.

#include "probe/options.h"

#include <csetjmp>
#include <getopt.h>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz.h"
#include "probe/settings.h"

using namespace sonaprobe;
using fuzz::require;

namespace {

std::jmp_buf whereItEnds;
bool parsing = false;

}  // namespace

// The ways out of the parser, and code-name files: every other one is missing.
[[noreturn]] void endFatally(const char* message) asm("__wrap__ZN9sonaprobe9fatalExitEPKc");

void endFatally(const char* message) {
    require(message != nullptr && std::string_view(message).ends_with('\n'), "a message is a line");
    std::longjmp(whereItEnds, 1 + EXIT_FAILURE);
}

extern "C" {
[[noreturn]] void __real_exit(int status);
std::FILE* __real_fopen(const char* path, const char* mode);

[[noreturn]] void __wrap_exit(int status) {
    if (!parsing) __real_exit(status);
    std::longjmp(whereItEnds, 1 + status);
}

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    if (!parsing) return __real_fopen(path, mode);
    return std::strlen(path) % 2 == 0 ? __real_fopen("/dev/null", "r") : nullptr;
}
}

namespace {

// A stream that counts the bytes that come.
ssize_t count(void* bytes, const char*, size_t size) {
    *static_cast<size_t*>(bytes) += size;
    return static_cast<ssize_t>(size);
}

std::FILE* counting(size_t& bytes) {
    std::FILE* const stream = fopencookie(
        &bytes, "w", {.read = nullptr, .write = count, .seek = nullptr, .close = nullptr});
    require(stream != nullptr, "there is a stream");
    return stream;
}

struct Outcome {
    int status;            // -1 where the program goes on
    std::string settings;  // as bytes
    size_t said;           // on standard output

    bool sameBut(size_t field, const Outcome& other) const {
        std::string mine = settings;
        mine.replace(field, sizeof(uint32_t), other.settings, field, sizeof(uint32_t));
        return status == other.status && mine == other.settings;
    }
};

// What the parser made of the settings: addresses, the time of day and what follows a path do not
// count.
std::string bytesOfSettings() {
    if (settings.decodeFile != nullptr) {
        std::fclose(settings.decodeFile);
        settings.decodeFile = stdin;
    }
    if (std::string_view(settings.rawPath).starts_with("./raw-")) settings.rawPath[0] = '\0';
    for (char* path : {settings.rawPath, settings.decodePath}) {
        std::memset(path + std::strlen(path), 0, kPathRoom - std::strlen(path));
    }
    return {reinterpret_cast<const char*>(&settings), sizeof settings};
}

void requireUsable() {
    const LineOptions& line = settings.line;
    for (const uint32_t flag :
         {line.showThread, line.showGroup, line.showMethod, line.showPointer, line.indent,
          line.showCodes, line.showCpu, line.basicFormat, line.noSeparator, line.verbose,
          line.includeHAL, settings.showTimers, settings.showReadReg, settings.enableAudioTracing,
          settings.noLog, settings.dumpOnce, settings.writeRaw, settings.readRaw}) {
        require(flag <= 1, "flags are 0 or 1");
    }
    require(line.showHistoric == 0, "no option shows class 0");
    require(settings.bufferSize > 0, "there is room for records");
    for (const char* path : {settings.rawPath, settings.decodePath}) {
        require(std::memchr(path, '\0', kPathRoom) != nullptr, "paths end");
    }
}

// Parses from the settings that the program starts with.
Outcome outcomeOf(std::vector<std::string> arguments) {
    static size_t said = 0;
    static size_t complained = 0;
    static std::FILE* const complaints = counting(complained);
    static std::FILE* const redirected = stdout = counting(said);
    static std::FILE* messages = nullptr;

    std::memset(static_cast<void*>(&settings), 0, sizeof settings);
    new (&settings) Settings;
    settings.programName = "sonaprobe";
    optind = 0;  // getopt begins anew
    said = 0;
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    messages = std::exchange(stderr, complaints);
    parsing = true;
    const int end = setjmp(whereItEnds);
    if (end == 0) parseOptions(static_cast<int>(arguments.size()), argv.data());
    parsing = false;
    stderr = messages;

    if (end == 0) requireUsable();
    std::fflush(complaints);
    std::fflush(redirected);
    return {.status = end - 1, .settings = bytesOfSettings(), .said = said};
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMostArguments = 100;
    std::vector<std::string> arguments{"sonaprobe", ""};
    for (const char byte : std::string(data, data + size)) {
        if (byte != '\0') {
            arguments.back() += byte;
        } else if (arguments.size() < kMostArguments) {
            arguments.emplace_back();
        }
    }
    const Outcome outcome = outcomeOf(arguments);
    constexpr size_t kVerbose = offsetof(Settings, line) + offsetof(LineOptions, verbose);
    require(outcomeOf(arguments).sameBut(kVerbose, outcome), "a command line means one thing");

    const bool noOption = std::ranges::none_of(
        arguments, [](const std::string& argument) { return argument.starts_with('-'); });
    static const Outcome nothing = outcomeOf({"sonaprobe"});
    if (noOption) {
        require(outcome.sameBut(kVerbose, nothing) && outcome.said == 0, "operands mean nothing");
    }
    arguments.insert(arguments.begin() + 1, "--verbose");
    require(outcomeOf(arguments).sameBut(kVerbose, outcome), "--verbose changes no other setting");
    return 0;
}
