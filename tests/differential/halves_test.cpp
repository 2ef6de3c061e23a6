// A raw file prints what its two halves print, one read after the other in one run.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "collected_lines.h"
#include "option_set.h"
#include "rawfile/slot_reader.h"
#include "record_maker.h"
#include "without_clock.h"

namespace sonaprobe::differential {
namespace {

// What one printer prints of the slots, read part by part, with every time of day masked.
std::string printedFrom(const OptionSet& options,
                        const std::vector<std::span<const TraceRecord>>& parts) {
    CollectedLines printed;
    OutputLine output(printed.sink());
    LinePrinter printer = printerOf(options, output);
    std::string text;
    for (const auto part : parts) {
        const int file = memfd_create("slots", MFD_CLOEXEC);
        const auto length = static_cast<ssize_t>(part.size_bytes());
        EXPECT_EQ(pwrite(file, part.data(), part.size_bytes(), 0), length);
        SlotReader reader(file);
        for (auto slots = reader.next(); !slots.empty(); slots = reader.next()) {
            for (const TraceRecord& slot : slots) {
                printer.takeSlot(slot);
                text += withoutClock(printed.take());
            }
        }
        close(file);
    }
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
    for (int round = 0; round < 20; ++round) {
        const OptionSet options = randomOptions(random);
        std::vector<TraceRecord> made(1 + random.below(5000));
        for (TraceRecord& slot : made) slot = randomSlot(random, maker);
        const std::span<const TraceRecord> slots = made;
        const size_t cut = random.below(slots.size() + 1);
        ASSERT_EQ(printedFrom(options, {slots}),
                  printedFrom(options, {slots.first(cut), slots.subspan(cut)}))
            << "seed " << seedOfRun() << ", round " << round << ", options " << options.text();
    }
}

}  // namespace
}  // namespace sonaprobe::differential
