// A raw file prints what its two halves print, one read after the other in one run.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "captured_output.h"
#include "option_set.h"
#include "rawfile/raw_reader.h"
#include "record_maker.h"

namespace sonaprobe::differential {
namespace {

std::string fileName(const char* part) {
    return testing::TempDir() + "halves-" + std::to_string(getpid()) + '-' + part;
}

void writeSlots(const std::string& path, std::span<const TraceRecord> slots) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(slots.data()),
               static_cast<std::streamsize>(slots.size_bytes()));
    ASSERT_TRUE(file.flush());
}

// Reads the files in a process of its own, which starts from this one's state, and returns what
// it prints, with every time of day masked.
std::string printedFrom(const OptionSet& options, const std::vector<std::string>& paths) {
    const std::string resultPath = fileName("result");
    std::fflush(stdout);
    apply(options);
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen(resultPath.c_str(), "w", stdout) == nullptr) _exit(1);
        for (const std::string& path : paths) readRawFile(path.c_str());
        _exit(std::fflush(stdout) == 0 ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);

    std::ifstream result(resultPath);
    std::string text;
    for (std::string line; std::getline(result, line);) text += withoutClock(line) + '\n';
    unlink(resultPath.c_str());
    return text;
}

TraceRecord randomSlot(Random& random, RecordMaker& maker) {
    TraceRecord slot = maker.make();
    if (random.oneIn(200)) slot.debugid = kInvalidMarker;
    if (random.oneIn(200)) {
        slot.debugid = kDivisorMarker;
        slot.timestamp = random.oneOf({uint64_t{0}, uint64_t{1}, uint64_t{24}, UINT64_MAX});
    }
    return slot;
}

TEST(Halves, PrintWhatTheWholeFilePrints) {
    Random random(seedOfRun());
    RecordMaker maker(random);
    const std::string whole = fileName("whole");
    const std::string first = fileName("first");
    const std::string second = fileName("second");
    for (int round = 0; round < 20; ++round) {
        const OptionSet options = randomOptions(random);
        std::vector<TraceRecord> slots(1 + random.below(5000));
        for (TraceRecord& slot : slots) slot = randomSlot(random, maker);
        const size_t cut = random.below(slots.size() + 1);
        writeSlots(whole, slots);
        writeSlots(first, std::span(slots).first(cut));
        writeSlots(second, std::span(slots).subspan(cut));
        ASSERT_EQ(printedFrom(options, {whole}), printedFrom(options, {first, second}))
            << "seed " << seedOfRun() << ", round " << round << ", options " << options.text();
    }
    for (const std::string& path : {whole, first, second}) unlink(path.c_str());
}

}  // namespace
}  // namespace sonaprobe::differential
