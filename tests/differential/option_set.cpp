// Sets of options.

#include "option_set.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "code_file.h"
#include "probe/settings.h"

namespace sonaprobe::differential {

namespace {

std::set<uint32_t> randomClasses(Random& random) {
    std::set<uint32_t> classes;
    for (uint64_t count = 1 + random.below(40); count > 0; --count) {
        classes.insert(static_cast<uint32_t>(random.below(64)));
    }
    if (random.oneIn(8)) classes = {51};  // an argument that names no class
    return classes;
}

}  // namespace

std::string OptionSet::text() const {
    std::string result;
    const auto add = [&](bool given, const char* option) {
        if (given) result += std::string(option) + ' ';
    };
    add(verbose, "-v");
    add(kernelTime, "-k");
    add(!localTime, "-s");
    add(!thread, "-H");
    add(!group, "-g");
    add(!method, "-m");
    add(!pointer, "-u");
    add(!indent, "-i");
    add(codes, "-c");
    add(cpu, "-C");
    add(basic, "-B");
    add(!separator, "-S");
    add(hal, "-A");
    add(all, "-a");
    add(decode, "-d");
    add(historic, "(class 0)");
    for (const uint32_t id : filterOut) result += "-F " + std::to_string(id) + ' ';
    for (const uint32_t id : filterAllExcept) result += "-X " + std::to_string(id) + ' ';
    return result + "divisor " + std::to_string(divisor);
}

OptionSet randomOptions(Random& random) {
    OptionSet options;
    for (bool* flag : {&options.kernelTime, &options.localTime, &options.thread, &options.codes,
                       &options.cpu, &options.hal, &options.historic, &options.all}) {
        *flag = random.oneIn(2);
    }
    for (bool* flag : {&options.group, &options.method, &options.pointer, &options.indent,
                       &options.separator, &options.verbose}) {
        *flag = !random.oneIn(4);
    }
    options.basic = random.oneIn(10);
    options.decode = random.oneIn(4);
    options.all |= options.decode;
    if (random.oneIn(6)) options.filterOut = randomClasses(random);
    if (random.oneIn(8)) options.filterAllExcept = randomClasses(random);
    const auto anyDivisor = static_cast<double>(random.bits() >> random.below(64));
    options.divisor = random.oneOf({1000.0, 24.0, 125'000.0 / 3.0, 0.0, anyDivisor});
    return options;
}

void apply(const OptionSet& options) {
    if (settings.decodeFile != nullptr) std::fclose(settings.decodeFile);
    settings = Settings{};
    settings.verbose = options.verbose;
    settings.timeMode =
        (options.kernelTime ? kKernelTime : 0U) | (options.localTime ? kLocalTime : 0U);
    settings.showThread = options.thread;
    settings.showGroup = options.group;
    settings.showMethod = options.method;
    settings.showPointer = options.pointer;
    settings.indent = options.indent;
    settings.showCodes = options.codes;
    settings.showCpu = options.cpu;
    settings.basicFormat = options.basic;
    settings.noSeparator = !options.separator;
    settings.includeHAL = options.hal;
    settings.showHistoric = options.historic;
    if (options.all) settings.printMask |= kPrintAll;
    if (options.decode) {
        std::strcpy(settings.decodePath, codeFilePath());
        settings.decodeFile = std::fopen(settings.decodePath, "r");
        if (settings.decodeFile == nullptr) std::abort();
    }
    for (const uint32_t id : options.filterOut) settings.filterOut.insert(id);
    for (const uint32_t id : options.filterAllExcept) settings.filterAllExcept.insert(id);
    settings.tickDivisor = options.divisor;
}

}  // namespace sonaprobe::differential
