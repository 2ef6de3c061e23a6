// Readers and printers side by side in threads of one process say what each says alone. The thread
// sanitizer sees to it that they share nothing.

#include <gtest/gtest.h>
#include <latch>
#include <thread>

#include "library.h"

namespace sonaprobe::library {
namespace {

constexpr unsigned kThreads = 4;

// A record of every audio code and of many others, each trace with arguments of its own.
std::vector<TraceRecord> traceOf(unsigned seed) {
    std::vector<TraceRecord> slots{slotOf(kDivisorMarker, 24 + seed)};
    uint64_t word = seed;
    const auto next = [&] { return word = word * 6364136223846793005U + 1442695040888963407U; };
    for (const uint32_t key : {kAudioClassWord << 16, kAudioServerKey, 0x05250000U}) {
        for (uint32_t low = 0; low < 0x10000; low += 1 + seed) {
            TraceRecord slot = slotOf(key | low, 1000 * slots.size());
            slot.arg1 = next();
            slot.arg2 = next() >> 60;
            slot.arg3 = next();
            slot.arg4 = next() >> 56;
            slot.arg5 = next() >> 40;
            slots.push_back(slot);
        }
    }
    return slots;
}

// Everything that the library says of a trace; with a code-name set that others read too.
std::string told(const std::vector<TraceRecord>& slots, const sonaprobe_names* names) {
    const auto bytes = std::as_bytes(std::span(slots));
    const Printer printer = newPrinter();
    sonaprobe_printer_set(printer.get(), SONAPROBE_LINE_TIME, SONAPROBE_TIME_KERNEL);
    sonaprobe_printer_set(printer.get(), SONAPROBE_LINE_ALL_CODES, 1);
    sonaprobe_printer_set(printer.get(), SONAPROBE_LINE_AUDIO_SERVER, 1);
    sonaprobe_printer_set_names(printer.get(), names);
    std::string all = linesOf(readerOf(bytes).get(), printer.get());

    // The local time is another in each run, and so is not told, but made in all threads.
    const Printer local = newPrinter();
    linesOf(readerOf(bytes.first(6400)).get(), local.get());

    const Reader reader = readerOf(bytes);
    const sonaprobe_event* event = nullptr;
    while (sonaprobe_next(reader.get(), &event) > 0) {
        all += sonaprobe_event_group(event);
        all += sonaprobe_event_is_failure(event) ? " failed " : " ";
        for (size_t i = 0; i < sonaprobe_event_value_count(event); ++i) {
            const sonaprobe_value* const value = sonaprobe_event_value(event, i);
            all += sonaprobe_value_name(value);
            all += sonaprobe_value_text(value, nullptr);
        }
    }
    return all;
}

TEST(Threads, EachSaysWhatItSaysAlone) {
    sonaprobe_names* opened = nullptr;
    ASSERT_EQ(sonaprobe_open_names(&opened, "/dev/null"), 0);
    const Names names(opened);
    std::vector<std::vector<TraceRecord>> traces;
    std::vector<std::string> alone;
    for (unsigned i = 0; i < kThreads; ++i) {
        traces.push_back(traceOf(i));
        alone.push_back(told(traces.back(), names.get()));
        EXPECT_GT(alone.back().size(), 100'000U);
    }

    std::vector<std::string> together(kThreads);
    std::latch begin(kThreads);
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            begin.arrive_and_wait();
            together[i] = told(traces[i], names.get());
        });
    }
    threads.clear();  // waits for them
    for (unsigned i = 0; i < kThreads; ++i) EXPECT_TRUE(together[i] == alone[i]) << i;
}

}  // namespace
}  // namespace sonaprobe::library
