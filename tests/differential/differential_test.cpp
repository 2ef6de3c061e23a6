// Random records under random options print what the plain reference prints.
//
// SONAPROBE_DIFFERENTIAL_SEED and SONAPROBE_DIFFERENTIAL_RECORDS ask for another run or a longer
// one.

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <span>

#include "collected_lines.h"
#include "option_set.h"
#include "record_maker.h"
#include "reference.h"
#include "without_clock.h"

namespace sonaprobe::differential {
namespace {

// Texts that print characters print any byte, a line end among them.
bool holdsLineEnd(const TraceRecord& record) {
    const auto bytes = std::as_bytes(std::span(&record, 1));
    return std::ranges::find(bytes, std::byte{'\n'}) != bytes.end();
}

void expectSameLines(const OptionSet& options, const std::vector<TraceRecord>& records) {
    CollectedLines printed;
    OutputLine output(printed.sink());
    LinePrinter printer = printerOf(options, output);
    Reference reference;
    for (size_t i = 0; i < records.size(); ++i) {
        printer.print(records[i]);
        const std::string whole = printed.take();
        const std::string line = options.localTime && !options.basic ? withoutClock(whole) : whole;
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

// Lines whose indentation ends around the end of the output line's buffer.
TEST(Differential, NestingDeeperThanALineBufferPrintsWhatTheReferencePrints) {
    constexpr uint64_t kAround = 200;
    constexpr uint64_t kDepth = OutputLine::kFillRoom - kAround;
    const OptionSet options;
    TraceRecord record{};
    CollectedLines printed;
    OutputLine output(printed.sink());
    LinePrinter printer = printerOf(options, output);
    Reference reference(kDepth);
    const auto expectSameLine = [&](uint32_t debugid) {
        record.debugid = debugid;
        printer.print(record);
        ASSERT_EQ(withoutClock(printed.take()), reference.print(options, record));
    };
    record.debugid = 0x05245C0D;
    for (uint64_t depth = 0; depth < kDepth; ++depth) {
        printer.print(record);
        printed.text.clear();
    }
    for (uint64_t i = 0; i < 2 * kAround; ++i) expectSameLine(0x05245C0D);
    expectSameLine(0x05245C0C);
    for (uint64_t i = 0; i < 2 * kAround; ++i) expectSameLine(0x05245C0E);
}

}  // namespace
}  // namespace sonaprobe::differential
