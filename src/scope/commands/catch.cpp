// sonascope catch: what came before and after an event, from the live trace.

#include <CLI/CLI.hpp>
#include <cerrno>
#include <ctime>
#include <limits>
#include <memory>
#include <unistd.h>

#include "analysis/spelled.h"
#include "platform/platform.h"
#include "scope/catch/watch.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/options.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    WatchOptions watch;
    std::string keep = "10s";
    std::string after = "200ms";
    std::string codes;
    bool noTrace = false;
};

Nanoseconds timeOf(const char* option, const std::string& text) {
    const std::optional<Nanoseconds> time = spelledTime(text);
    if (!time || *time < 0) {
        throw Failure{std::string(option) + ": '" + escaped(text) +
                      "' is no time; give a number and a unit, such as 10s or 200ms"};
    }
    return *time;
}

// "0x05240000-0x0524FFFF"
void readCodes(const std::string& text, WatchOptions& options) {
    const size_t dash = text.find('-');
    const auto first = spelledNumber(text.substr(0, dash));
    const auto last = dash == std::string::npos ? first : spelledNumber(text.substr(dash + 1));
    constexpr uint64_t kMost = std::numeric_limits<uint32_t>::max();
    if (!first || !last || *first > *last || *last > kMost) {
        throw Failure{"--codes: '" + escaped(text) +
                      "' is no range, such as 0x05240000-0x0524FFFF"};
    }
    options.firstCode = static_cast<uint32_t>(*first);
    options.lastCode = static_cast<uint32_t>(*last);
}

std::string pathOfNow() {
    const std::time_t now = std::time(nullptr);
    char path[40];
    std::strftime(path, sizeof path, "caught-%Y%m%d-%H%M%S.raw", std::localtime(&now));
    return path;
}

Status run(Options& options) {
    if (geteuid() != 0) {
        throw Failure{"catch must be run as root, as all that uses the trace facility; try sudo"};
    }
    if (reexec_to_match_kernel() != 0) {
        throw systemFailure("could not re-execute to match the kernel's architecture");
    }
    WatchOptions& watched = options.watch;
    watched.keep = timeOf("--keep", options.keep);
    watched.after = timeOf("--after", options.after);
    watched.startDrivers = !options.noTrace;
    if (!options.codes.empty()) readCodes(options.codes, watched);
    if (watched.path.empty()) watched.path = pathOfNow();
    return watch(watched);
}

}  // namespace

Run setUpCatch(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    WatchOptions& watched = options->watch;
    require(
        addValues(app, "--on", "EVENT", watched.on,
                  "dropout, failure, 'longer 5ms', an event, or a condition on values; of several "
                  "any"));
    addValue(app, "--keep", "TIME", options->keep,
             "records of so long before it: 10s unless given");
    addValue(app, "--after", "TIME", options->after, "and of so long after it: 200ms unless given");
    addValue(app, "-o,--output", "NEW", watched.path,
             "the file to write, caught-DATE-TIME.raw unless given; a new one");
    app.add_option("--count", watched.count, "catch so many, in NEW-1, NEW-2 and so on")
        ->type_name("N")
        ->check(CLI::Range(uint64_t{1}, uint64_t{100'000}));
    addValue(app, "--then", "COMMAND", watched.then,
             "answer about each file at once: why, info, stats, ...");
    addFlag(app, "--save-on-end", watched.saveOnEnd, "write what is kept where Ctrl-C ends it");
    app.add_option("--memory", watched.memory, "hold at most so many bytes: 1GiB unless given")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false));
    app.add_option("--buffer", watched.buffer, "records of the kernel's buffer: 5000000")
        ->type_name("N")
        ->check(CLI::Range(uint32_t{1}, std::numeric_limits<uint32_t>::max()));
    addValue(app, "--codes", "RANGE", options->codes, "record these codes alone: FIRST-LAST");
    addFlag(app, "--no-trace", options->noTrace, "do not switch the drivers' tracing on");
    addExamples(app,
                "  sudo sonascope catch --on dropout --then why\n"
                "  sudo sonascope catch --on 'longer 5ms' --on failure --count 10 -o slow.raw\n"
                "  sudo sonascope catch --on 'pin nodeID == 21 && result != 0' --keep 30s\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
