// The command line: one table of options, what each says and what each sets.

#include "probe/options.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <getopt.h>

#include "probe/fatal_exit.h"
#include "probe/settings.h"
#include "probe/usage.h"
#include "registry/audio_class_registry.h"

namespace sonaprobe {

namespace {

constexpr const char* kShortOptions = "Ab:ad::ctksgmufiTLw::r:CHI:1:2:BSDRF:X:vVlh?";

// A message on standard output, if --verbose has been met already.
[[gnu::format(printf, 1, 2)]] void say(const char* format, ...) {
    if (!settings.line.verbose) return;
    va_list values;
    va_start(values, format);
    std::vprintf(format, values);
    va_end(values);
}

uint32_t number(const char* text) { return static_cast<uint32_t>(std::strtoul(text, nullptr, 0)); }

void copyPath(char (&path)[kPathRoom], const char* source, const char* tooLong) {
    const size_t length = std::strlen(source);
    if (length >= kPathRoom) fatalExit(tooLong);
    std::memcpy(path, source, length + 1);
}

void setBufferSize(const char* text) {
    settings.bufferSize = number(text);
    if (settings.bufferSize == 0) {
        std::fprintf(stderr, "An invalid buffer of size %u was requested!\n", settings.bufferSize);
        fatalExit("Argument parsing error\n");
    }
    say("Setting trace buffer size to %u\n", settings.bufferSize);
}

void openDecodeFile(const char* path) {
    copyPath(settings.decodePath, path != nullptr ? path : kDefaultDecodePath,
             "File path length of decode file is too long\n");
    if (settings.decodeFile != nullptr) std::fclose(settings.decodeFile);
    settings.decodeFile = std::fopen(settings.decodePath, "r");
    if (settings.decodeFile == nullptr) {
        std::fprintf(stderr, "There was a problem opening the file at '%s'\n", settings.decodePath);
        return;
    }
    settings.line.printMask |= kPrintAll;
    say("Using '%s' file to decode other tracepoints\n", settings.decodePath);
}

void setWritePath(const char* path) {
    say("Got w flag\n");
    char defaultPath[30];
    if (path == nullptr) {
        const std::time_t now = std::time(nullptr);
        // The day stands before the month.
        std::strftime(defaultPath, sizeof defaultPath, "./raw-%y%d%m%H%M%S", std::localtime(&now));
        path = defaultPath;
    }
    copyPath(settings.rawPath, path, "The path length of raw file is too long\n");
    settings.writeRaw = 1;
    say("Will output raw format file to '%s'\n", settings.rawPath);
}

void setReadPath(const char* path) {
    copyPath(settings.rawPath, path, "File path length of raw data file is too long\n");
    settings.readRaw = 1;
    say("Will read raw data from file %s\n", settings.rawPath);
}

uint32_t addClass(ClassIdSet& set, const char* text) {
    const uint32_t id = AudioClassRegistry::ResolveClassArgument(text);
    set.insert(id);
    return id;
}

void setVerbose() {
    settings.line.verbose = 1;
    say("Verbose mode ON\n");
}

struct Option {
    const char* name;
    char letter;
    int argument;
    void (*handle)(const char* argument);
};

constexpr int kNone = no_argument;
constexpr int kRequired = required_argument;
constexpr int kOptional = optional_argument;

using Text = const char*;

// clang-format off
constexpr Option kOptions[] = {
    {"bufsize",   'b', kRequired, setBufferSize},
    {"buffer",    'b', kRequired, setBufferSize},
    {"size",      'b', kRequired, setBufferSize},
    {"all",       'a', kNone,     [](Text) { settings.line.printMask |= kPrintAll;     say("Setting print mask to 0x%08x\n", settings.line.printMask); }},
    {"decode",    'd', kOptional, openDecodeFile},
    {"codes",     'c', kNone,     [](Text) { settings.line.showCodes = 1;              say("Will display codes\n"); }},
    {"time",      't', kNone,     [](Text) {                                      say("Will display local time\n"); }},
    {"kernel",    'k', kNone,     [](Text) { settings.line.timeMode = kKernelTime;     say("Will display kernel time\n"); }},
    {"nostamp",   's', kNone,     [](Text) { settings.line.timeMode &= ~kLocalTime;    say("Will NOT display time stamps\n"); }},
    {"nogroup",   'g', kNone,     [](Text) { settings.line.showGroup = 0;              say("Will NOT display group name\n"); }},
    {"nomethod",  'm', kNone,     [](Text) { settings.line.showMethod = 0;             say("Will NOT display method name\n"); }},
    {"noptr",     'u', kNone,     [](Text) { settings.line.showPointer = 0;            say("Will NOT display Audio pointer\n"); }},
    {"timers",    'f', kNone,     [](Text) { settings.showTimers = 1;             say("Will print the RootHubTimer fired messages\n"); }},
    {"indentOff", 'i', kNone,     [](Text) { settings.line.indent = 0;                 say("Will NOT indent\n"); }},
    {"notrace",   'T', kNone,     [](Text) { settings.enableAudioTracing = 0;     say("Will NOT enable Audio tracing\n"); }},
    {"nolog",     'L', kNone,     [](Text) { settings.noLog = 1;                  say("Will disable printing of Audio tracepoint logging\n"); }},
    {"write",     'w', kOptional, setWritePath},
    {"read",      'r', kRequired, setReadPath},
    {"cpu",       'C', kNone,     [](Text) { settings.line.showCpu = 1;                say("Will display CPU number\n"); }},
    {"HAL",       'A', kNone,     [](Text) { settings.line.includeHAL = 1;             say("Setting HAL LOG to 0x%08x\n", settings.line.includeHAL); }},
    {"thread",    'H', kNone,     [](Text) { settings.line.showThread = 0;             say("Will NOT display thread\n"); }},
    {"interest",  'I', kRequired, [](Text a) { settings.interestType = number(a);   say("Setting interest to 0x%x\n", settings.interestType); }},
    {"value1",    '1', kRequired, [](Text a) { settings.interestValue1 = number(a); say("Setting interest value 1 to %u\n", settings.interestValue1); }},
    {"value2",    '2', kRequired, [](Text a) { settings.interestValue2 = number(a); say("Setting interest value 2 to %u\n", settings.interestValue2); }},
    {"basic",     'B', kNone,     [](Text) { settings.line.basicFormat = 1;            say("Will using basic formatting\n"); }},
    {"nosep",     'S', kNone,     [](Text) { settings.line.noSeparator = 1;            say("Will NOT separate LOG from method during formatting.\n"); }},
    {"dump",      'D', kNone,     [](Text) { settings.dumpOnce = 1;               say("Will dump trace buffer and exit.\n"); }},
    {"register",  'R', kNone,     [](Text) { settings.showReadReg = 1;            say("Will output ReadReg tracepoints"); }},
    {"filter-out",        'F', kRequired, [](Text a) { say("Filtering out audioclass %u\n", addClass(settings.line.filterOut, a)); }},
    {"filter-all-except", 'X', kRequired, [](Text a) { say("Filtering all audioclass except %u\n", addClass(settings.line.filterAllExcept, a)); }},
    {"verbose",     'v', kNone,   [](Text) { setVerbose(); }},
    {"version",     'V', kNone,   [](Text) { printVersion(); }},
    {"listclasses", 'l', kNone,   [](Text) { AudioClassRegistry::ListClasses(); }},
    {"help",        'h', kNone,   [](Text) { printUsage(); }},
};
// clang-format on

constexpr size_t kOptionCount = std::size(kOptions);

std::array<option, kOptionCount + 1> longOptions() {
    std::array<option, kOptionCount + 1> list{};  // the last one ends it
    for (size_t i = 0; i < kOptionCount; ++i) {
        list[i] = {kOptions[i].name, kOptions[i].argument, nullptr, kOptions[i].letter};
    }
    return list;
}

void handle(int letter, const char* argument) {
    for (const Option& option : kOptions) {
        if (option.letter == letter) return option.handle(argument);
    }
    printUsage();  // -?, an unknown option, a missing argument
}

}  // namespace

void parseOptions(int argc, char** argv) {
    if (argc <= 1) return;
    // Options behind operands are options too, whatever the environment says.
    unsetenv("POSIXLY_CORRECT");
    const auto list = longOptions();
    for (;;) {
        const int letter = getopt_long(argc, argv, kShortOptions, list.data(), nullptr);
        if (letter == -1) return;
        handle(letter, optarg);
    }
}

}  // namespace sonaprobe
