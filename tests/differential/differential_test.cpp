// Random records under random options print what the plain reference prints.
//
// SONAPROBE_DIFFERENTIAL_SEED and SONAPROBE_DIFFERENTIAL_RECORDS ask for another run or a longer
// one.

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <span>

#include "captured_output.h"
#include "lines/dispatch.h"
#include "lines/indentation.h"
#include "option_set.h"
#include "record_maker.h"
#include "reference.h"

namespace sonaprobe::differential {
namespace {

// As long-lived as what the program keeps between two records.
Reference reference;

// Texts that print characters print any byte, a line end among them.
bool holdsLineEnd(const TraceRecord& record) {
    const auto bytes = std::as_bytes(std::span(&record, 1));
    return std::ranges::find(bytes, std::byte{'\n'}) != bytes.end();
}

void expectSameLines(const OptionSet& options, const std::vector<TraceRecord>& records) {
    apply(options);
    resetIndentation();
    reference.resetIndentation();
    CapturedOutput output;
    for (const TraceRecord& record : records) {
        dispatchRecord(&record);
        output.endPart();
    }
    const std::vector<std::string> lines = output.finish();
    for (size_t i = 0; i < records.size(); ++i) {
        const std::string line =
            options.localTime && !options.basic ? withoutClock(lines[i]) : lines[i];
        ASSERT_EQ(line, reference.print(options, records[i]))
            << "seed " << seedOfRun() << ", options " << options.text() << ", record " << i
            << " of the batch:\n"
            << textOf(records[i]);
        const bool oneLineOrNone = line.empty() || line.find('\n') == line.size() - 1;
        ASSERT_TRUE(oneLineOrNone || holdsLineEnd(records[i])) << textOf(records[i]);
    }
}

TEST(Differential, RandomRecordsPrintWhatTheReferencePrints) {
    constexpr uint64_t kBatch = 256;
    Random random(seedOfRun());
    RecordMaker maker(random);
    uint64_t left = numberFromEnvironment("SONAPROBE_DIFFERENTIAL_RECORDS", 300'000);
    while (left > 0 && !HasFatalFailure()) {
        std::vector<TraceRecord> records(std::min(left, kBatch));
        std::ranges::generate(records, [&] { return maker.make(); });
        expectSameLines(randomOptions(random), records);
        left -= records.size();
    }
}

TEST(Differential, NestingDeeperThanALineBufferPrintsWhatTheReferencePrints) {
    constexpr size_t kDepth = 4500;
    TraceRecord start{};
    start.debugid = 0x05245C0D;
    TraceRecord end{};
    end.debugid = 0x05245C0E;
    TraceRecord other{};
    other.debugid = 0x05245C0C;
    std::vector<TraceRecord> records(kDepth, start);
    records.push_back(other);
    records.insert(records.end(), kDepth + 2, end);
    expectSameLines({}, records);
}

}  // namespace
}  // namespace sonaprobe::differential
