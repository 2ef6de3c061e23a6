// Sets of options.

#include "option_set.h"

#include "code_file.h"
#include "lines/code_names.h"

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

LinePrinter printerOf(const OptionSet& options, OutputLine& line) {
    static const CodeNames names = [] {
        CodeNames result;
        const std::string_view text = codeFileText();
        result.take(text.data(), text.size());
        result.endFile();
        return result;
    }();
    LineOptions result{
        .timeMode = (options.kernelTime ? kKernelTime : 0U) | (options.localTime ? kLocalTime : 0U),
        .showThread = options.thread,
        .showGroup = options.group,
        .showMethod = options.method,
        .showPointer = options.pointer,
        .indent = options.indent,
        .showCodes = options.codes,
        .showCpu = options.cpu,
        .basicFormat = options.basic,
        .noSeparator = !options.separator,
        .verbose = options.verbose,
        .includeHAL = options.hal,
        .showHistoric = options.historic,
    };
    if (options.all) result.printMask |= kPrintAll;
    for (const uint32_t id : options.filterOut) result.filterOut.insert(id);
    for (const uint32_t id : options.filterAllExcept) result.filterAllExcept.insert(id);
    LinePrinter printer(result, line, options.decode ? names.lookup() : NameLookup{});
    printer.setTicksPerMicrosecond(options.divisor);
    return printer;
}

}  // namespace sonaprobe::differential
