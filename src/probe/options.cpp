// The command line: one table of options, what each sets and what it says.

#include "probe/options.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <getopt.h>
#include <string_view>

#include "probe/fatal_exit.h"
#include "probe/output.h"
#include "probe/settings.h"
#include "probe/usage.h"
#include "registry/audio_class_registry.h"

namespace sonaprobe {

namespace {

// What --verbose says: a text, and after it the number that was set, with its line end.
enum class Number { none, decimal, hexadecimal, eightDigits };
struct Message {
    const char* text = nullptr;
    Number number = Number::none;
};

using Names = std::array<const char*, 3>;

struct Option {
    char letter = '\0';
    Names names{};  // of one meaning
    int argument = 0;
    void (*take)(const Option& option, const char* argument) = nullptr;
    Message message{};
    uint32_t* field = nullptr;  // set to this value, but for the bits to keep
    uint32_t value = 0;
    uint32_t keep = 0;
};

void say(const Message& message, uint32_t number) {
    if (!settings.line.verbose) return;
    switch (message.number) {
        case Number::none: printMessage(stdout, "%s", message.text); break;
        case Number::decimal: printMessage(stdout, "%s%u\n", message.text, number); break;
        case Number::hexadecimal: printMessage(stdout, "%s0x%x\n", message.text, number); break;
        case Number::eightDigits: printMessage(stdout, "%s0x%08x\n", message.text, number); break;
    }
}

void set(const Option& option, const char*) {
    *option.field = (*option.field & option.keep) | option.value;
    say(option.message, *option.field);
}

void setNumber(const Option& option, const char* text) {
    *option.field = static_cast<uint32_t>(std::strtoull(text, nullptr, 0));
    say(option.message, *option.field);
}

void changeNothing(const Option& option, const char*) { say(option.message, 0); }

void setBufferSize(const Option& option, const char* text) {
    if (static_cast<uint32_t>(std::strtoull(text, nullptr, 0)) == 0) {
        std::fprintf(stderr, "An invalid buffer of size %u was requested!\n", 0U);
        fatalExit("Argument parsing error\n");
    }
    setNumber(option, text);
}

void addClass(ClassIdSet& classes, const Option& option, const char* text) {
    const uint32_t id = AudioClassRegistry::ResolveClassArgument(text);
    classes.insert(id);
    say(option.message, id);
}

void copyPath(char (&path)[kPathRoom], const char* source, const char* tooLong) {
    const size_t length = std::strlen(source);
    if (length >= kPathRoom) fatalExit(tooLong);
    std::memcpy(path, source, length + 1);
}

void openDecodeFile(const Option&, const char* path) {
    copyPath(settings.decodePath, path != nullptr ? path : kDefaultDecodePath,
             "File path length of decode file is too long\n");
    if (settings.decodeFile != nullptr) std::fclose(settings.decodeFile);
    settings.decodeFile = std::fopen(settings.decodePath, "r");
    if (settings.decodeFile == nullptr) {
        std::fprintf(stderr, "There was a problem opening the file at '%s'\n", settings.decodePath);
        return;
    }
    settings.line.printMask |= kPrintAll;
    if (settings.line.verbose) {
        printMessage(stdout, "Using '%s' file to decode other tracepoints\n", settings.decodePath);
    }
}

void setWritePath(const Option& option, const char* path) {
    say(option.message, 0);
    char defaultPath[30];
    if (path == nullptr) {
        const std::time_t now = std::time(nullptr);
        // The day stands before the month.
        std::strftime(defaultPath, sizeof defaultPath, "./raw-%y%d%m%H%M%S", std::localtime(&now));
        path = defaultPath;
    }
    copyPath(settings.rawPath, path, "The path length of raw file is too long\n");
    settings.writeRaw = 1;
    if (settings.line.verbose) {
        printMessage(stdout, "Will output raw format file to '%s'\n", settings.rawPath);
    }
}

void setReadPath(const Option&, const char* path) {
    copyPath(settings.rawPath, path, "File path length of raw data file is too long\n");
    settings.readRaw = 1;
    if (settings.line.verbose) {
        printMessage(stdout, "Will read raw data from file %s\n", settings.rawPath);
    }
}

constexpr int kNone = no_argument;
constexpr int kRequired = required_argument;
constexpr int kOptional = optional_argument;
constexpr uint32_t kAllBits = 0xFFFFFFFF;

using enum Number;

constexpr LineOptions& line = settings.line;

// clang-format off
constexpr Option kOptions[] = {
    {'b', {"bufsize", "buffer", "size"}, kRequired, setBufferSize, {"Setting trace buffer size to ", decimal}, &settings.bufferSize},
    {'a', {"all"},       kNone,     set,           {"Setting print mask to ", eightDigits},                  &line.printMask, kPrintAll, kAllBits},
    {'d', {"decode"},    kOptional, openDecodeFile},
    {'c', {"codes"},     kNone,     set,           {"Will display codes\n"},                                 &line.showCodes, 1},
    {'t', {"time"},      kNone,     changeNothing, {"Will display local time\n"}},
    {'k', {"kernel"},    kNone,     set,           {"Will display kernel time\n"},                           &line.timeMode, kKernelTime},
    {'s', {"nostamp"},   kNone,     set,           {"Will NOT display time stamps\n"},                       &line.timeMode, 0, ~kLocalTime},
    {'g', {"nogroup"},   kNone,     set,           {"Will NOT display group name\n"},                        &line.showGroup, 0},
    {'m', {"nomethod"},  kNone,     set,           {"Will NOT display method name\n"},                       &line.showMethod, 0},
    {'u', {"noptr"},     kNone,     set,           {"Will NOT display Audio pointer\n"},                     &line.showPointer, 0},
    {'f', {"timers"},    kNone,     set,           {"Will print the RootHubTimer fired messages\n"},         &settings.showTimers, 1},
    {'i', {"indentOff"}, kNone,     set,           {"Will NOT indent\n"},                                    &line.indent, 0},
    {'T', {"notrace"},   kNone,     set,           {"Will NOT enable Audio tracing\n"},                      &settings.enableAudioTracing, 0},
    {'L', {"nolog"},     kNone,     set,           {"Will disable printing of Audio tracepoint logging\n"},  &settings.noLog, 1},
    {'w', {"write"},     kOptional, setWritePath,  {"Got w flag\n"}},
    {'r', {"read"},      kRequired, setReadPath},
    {'C', {"cpu"},       kNone,     set,           {"Will display CPU number\n"},                            &line.showCpu, 1},
    {'A', {"HAL"},       kNone,     set,           {"Setting HAL LOG to ", eightDigits},                     &line.includeHAL, 1},
    {'H', {"thread"},    kNone,     set,           {"Will NOT display thread\n"},                            &line.showThread, 0},
    {'I', {"interest"},  kRequired, setNumber,     {"Setting interest to ", hexadecimal},                    &settings.interestType},
    {'1', {"value1"},    kRequired, setNumber,     {"Setting interest value 1 to ", decimal},                &settings.interestValue1},
    {'2', {"value2"},    kRequired, setNumber,     {"Setting interest value 2 to ", decimal},                &settings.interestValue2},
    {'B', {"basic"},     kNone,     set,           {"Will using basic formatting\n"},                        &line.basicFormat, 1},
    {'S', {"nosep"},     kNone,     set,           {"Will NOT separate LOG from method during formatting.\n"}, &line.noSeparator, 1},
    {'D', {"dump"},      kNone,     set,           {"Will dump trace buffer and exit.\n"},                   &settings.dumpOnce, 1},
    {'R', {"register"},  kNone,     set,           {"Will output ReadReg tracepoints"},                      &settings.showReadReg, 1},
    {'F', {"filter-out"},        kRequired, [](auto& option, auto text) { addClass(line.filterOut, option, text); },       {"Filtering out audioclass ", decimal}},
    {'X', {"filter-all-except"}, kRequired, [](auto& option, auto text) { addClass(line.filterAllExcept, option, text); }, {"Filtering all audioclass except ", decimal}},
    {'v', {"verbose"},     kNone,   set,           {"Verbose mode ON\n"},                                    &line.verbose, 1},
    {'V', {"version"},     kNone,   [](auto&, auto) { printVersion(); }},
    {'l', {"listclasses"}, kNone,   [](auto&, auto) { AudioClassRegistry::ListClasses(); }},
    {'h', {"help"},        kNone,   [](auto&, auto) { printUsage(); }},
};
// clang-format on

constexpr size_t kNameCount = [] {
    size_t count = 0;
    for (const Option& row : kOptions) {
        for (const char* name : row.names) count += name != nullptr;
    }
    return count;
}();

// The rows as getopt_long() takes them; the last one ends the list.
constexpr auto kLongOptions = [] {
    std::array<option, kNameCount + 1> list{};
    size_t next = 0;
    for (const Option& row : kOptions) {
        for (const char* name : row.names) {
            if (name != nullptr) list[next++] = {name, row.argument, nullptr, row.letter};
        }
    }
    return list;
}();

// Each letter, with a colon where an argument must follow it and two where one may.
constexpr auto kShortOptions = [] {
    std::array<char, 3 * std::size(kOptions) + 2> letters{};
    size_t next = 0;
    for (const Option& row : kOptions) {
        letters[next++] = row.letter;
        for (int colons = 0; colons < row.argument; ++colons) letters[next++] = ':';
    }
    letters[next] = '?';
    return letters;
}();

constexpr bool standsOnce(const Option& row) {
    size_t letters = 0;
    size_t names = 0;
    for (const Option& other : kOptions) letters += other.letter == row.letter;
    for (const option& other : kLongOptions) {
        for (const char* name : row.names) {
            const bool both = name != nullptr && other.name != nullptr;
            names += both && std::string_view(other.name) == name;
        }
    }
    size_t own = 0;
    for (const char* name : row.names) own += name != nullptr;
    return letters == 1 && names == own;
}
static_assert(std::ranges::all_of(kOptions, standsOnce));
static_assert(no_argument == 0 && required_argument == 1 && optional_argument == 2);

void take(int letter, const char* argument) {
    for (const Option& row : kOptions) {
        if (row.letter == letter) return row.take(row, argument);
    }
    printUsage();  // -?, an unknown option, a missing argument
}

}  // namespace

void parseOptions(int argc, char** argv) {
    if (argc <= 1) return;
    // Options after operands are options too, whatever the environment says.
    unsetenv("POSIXLY_CORRECT");
    for (;;) {
        const int letter =
            getopt_long(argc, argv, kShortOptions.data(), kLongOptions.data(), nullptr);
        if (letter == -1) return;
        take(letter, optarg);
    }
}

}  // namespace sonaprobe
