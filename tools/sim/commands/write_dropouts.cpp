// sonaprobe-sim write dropouts: a raw trace file with dropouts, and what has caused each.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include "sim/arguments.h"
#include "sim/command.h"
#include "sim/dropouts/dropouts_trace.h"
#include "sim/messages.h"

namespace sonaprobe::sim {
namespace {

constexpr uint64_t kMostDropouts = 100'000;

bool readLevel(std::string_view name, DropoutsPlan& plan) {
    const auto level = std::ranges::find(kLevels, name, &Level::name);
    if (level == kLevels.end()) {
        complain("--level is easy, medium or hard, not '%s'", name.data());
        return false;
    }
    plan.level = &*level;
    return true;
}

// KIND[,KIND]
bool readCauses(std::string_view list, DropoutsPlan& plan) {
    while (!list.empty()) {
        const size_t comma = list.find(',');
        const std::string_view name = list.substr(0, comma);
        const auto cause = std::ranges::find(kCauseNames, name);
        if (cause == kCauseNames.end()) {
            complain(
                "'%.*s' is no cause; they are client, driver-call, blocked-by, preempted, "
                "late-wake, clock, engine-change, lost-records, unknown",
                static_cast<int>(name.size()), name.data());
            return false;
        }
        plan.causes.push_back(static_cast<Cause>(cause - kCauseNames.begin()));
        list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
    }
    return true;
}

bool writeFile(const char* path, const void* bytes, size_t size) {
    std::FILE* const file = std::fopen(path, "wb");
    bool written = file != nullptr && std::fwrite(bytes, 1, size, file) == size;
    if (file != nullptr && std::fclose(file) != 0) written = false;
    if (!written) complain("cannot write %s: %s", path, std::strerror(errno));
    return written;
}

}  // namespace

int runWriteDropouts(Arguments arguments) {
    const char* path = nullptr;
    const char* causes = "";
    const char* level = "medium";
    const char* truthPath = nullptr;
    DropoutsPlan plan{.count = 9, .seed = 1};
    const Operand operands[] = {{"FILE", &path}};
    const NumberOption numbers[] = {{"count", &plan.count, 0, kMostDropouts},
                                    {"seed", &plan.seed, 0, std::numeric_limits<uint64_t>::max()}};
    const TextOption texts[] = {{"cause", &causes}, {"level", &level}, {"truth", &truthPath}};
    if (!readArguments(arguments, operands, numbers, texts)) return 1;
    if (!readLevel(level, plan) || !readCauses(causes, plan)) return 1;
    if (plan.causes.empty()) {
        for (size_t i = 0; i < kCauseNames.size(); i++) {
            plan.causes.push_back(static_cast<Cause>(i));
        }
    }
    const DropoutsTrace trace = makeDropoutsTrace(plan);
    if (!writeFile(path, trace.slots.data(), trace.slots.size() * sizeof(TraceRecord))) return 1;
    if (truthPath == nullptr) return 0;
    return writeFile(truthPath, trace.truth.data(), trace.truth.size()) ? 0 : 1;
}

}  // namespace sonaprobe::sim
