// sonaprobe-sim write: a scenario's records into a raw trace file.

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "sim/arguments.h"
#include "sim/command.h"
#include "sim/messages.h"
#include "sim/stage.h"

namespace sonaprobe::sim {
namespace {

constexpr uint64_t kMostRecords = std::numeric_limits<uint64_t>::max();

// A whole hour of the machine's time, so that seconds within the minute begin at 0.
constexpr Ticks kOrigin = 3600 * kTicksPerSecond;

bool put(std::FILE* file, const TraceRecord& record) {
    return std::fwrite(&record, sizeof record, 1, file) == 1;
}

// Once through the scenario, or round after round up to a number of records. False with errno when
// the file takes no more.
bool writeRecords(std::FILE* file, Stage& stage, uint64_t wanted, uint64_t& written) {
    TraceRecord record{};
    record.timestamp = kTicksPerSecond / 1'000'000;
    record.debugid = kDivisorMarker;
    if (!put(file, record)) return false;
    const bool once = wanted == 0;
    do {
        beginRound(stage);
        while ((once || written < wanted) && nextRecord(stage, record)) {
            if (!put(file, record)) return false;
            written++;
        }
    } while (written < wanted);
    return std::fflush(file) == 0;
}

}  // namespace

int runWrite(Arguments arguments) {
    if (!arguments.empty() && arguments[0] == std::string_view("dropouts")) {
        return runWriteDropouts(arguments.subspan(1));
    }
    const char* name = nullptr;
    const char* path = nullptr;
    uint64_t records = 0;
    uint64_t seed = 1;
    const Operand operands[] = {{"SCENARIO", &name}, {"FILE", &path}};
    const NumberOption options[] = {{"records", &records, 1, kMostRecords},
                                    {"seed", &seed, 0, std::numeric_limits<uint64_t>::max()}};
    if (!readArguments(arguments, operands, options)) return 1;
    const Scenario* const scenario = findScenario(name);
    if (scenario == nullptr) return 1;

    std::vector<char> buffer(size_t{1} << 20);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "wb"),
                                                               &std::fclose);
    if (file == nullptr) {
        complain("cannot open %s: %s", path, std::strerror(errno));
        return 1;
    }
    std::setvbuf(file.get(), buffer.data(), _IOFBF, buffer.size());
    Stage stage = makeStage(*scenario, seed, 0);
    stage.clock.origin = kOrigin;
    uint64_t written = 0;
    if (!writeRecords(file.get(), stage, records, written)) {
        complain("cannot write %s: %s", path, std::strerror(errno));
        return 1;
    }
    return 0;
}

}  // namespace sonaprobe::sim
