// Lines through the C interface are the line printer's.

#include <fstream>
#include <gtest/gtest.h>

#include "code_file.h"
#include "collected_lines.h"
#include "library.h"
#include "option_set.h"
#include "record_maker.h"
#include "without_clock.h"

namespace sonaprobe::library {
namespace {

using differential::OptionSet;

Names namesOf(std::string_view text) {
    const std::string path = testing::TempDir() + "library_test.codes";
    std::ofstream(path) << text;
    sonaprobe_names* names = nullptr;
    EXPECT_EQ(sonaprobe_open_names(&names, path.c_str()), 0);
    return Names(names);
}

Printer printerOf(const OptionSet& options, const sonaprobe_names* names) {
    Printer printer = newPrinter();
    const auto set = [&](sonaprobe_line_option option, int value) {
        EXPECT_EQ(sonaprobe_printer_set(printer.get(), option, value), 0);
    };
    set(SONAPROBE_LINE_TIME, options.localTime    ? SONAPROBE_TIME_LOCAL
                             : options.kernelTime ? SONAPROBE_TIME_KERNEL
                                                  : SONAPROBE_TIME_NONE);
    set(SONAPROBE_LINE_CPU, options.cpu);
    set(SONAPROBE_LINE_THREAD, options.thread);
    set(SONAPROBE_LINE_CODE, options.codes);
    set(SONAPROBE_LINE_INDENTATION, options.indent);
    set(SONAPROBE_LINE_GROUP, options.group);
    set(SONAPROBE_LINE_METHOD, options.method);
    set(SONAPROBE_LINE_PADDING, options.separator);
    set(SONAPROBE_LINE_OBJECT, options.pointer);
    set(SONAPROBE_LINE_BASIC, options.basic);
    set(SONAPROBE_LINE_ALL_CODES, options.all);
    set(SONAPROBE_LINE_AUDIO_SERVER, options.hal);
    set(SONAPROBE_LINE_VERBOSE, options.verbose);
    for (const uint32_t id : options.filterOut) {
        EXPECT_EQ(sonaprobe_printer_filter_out(printer.get(), id), 0);
    }
    for (const uint32_t id : options.filterAllExcept) {
        EXPECT_EQ(sonaprobe_printer_filter_all_except(printer.get(), id), 0);
    }
    EXPECT_EQ(sonaprobe_printer_set_names(printer.get(), options.decode ? names : nullptr), 0);
    return printer;
}

TEST(Line, IsTheLinePrintersUnderAnyOptions) {
    differential::Random random(differential::seedOfRun());
    differential::RecordMaker maker(random);
    const Names names = namesOf(differential::codeFileText());
    for (int batch = 0; batch < 300 && !testing::Test::HasFailure(); ++batch) {
        OptionSet options = differential::randomOptions(random);
        options.historic = false;
        std::vector<TraceRecord> slots;
        slots.reserve(100);
        for (int i = 0; i < 100; ++i) slots.push_back(maker.make());

        CollectedLines collected;
        OutputLine output(collected.sink());
        LinePrinter expected = differential::printerOf(options, output);
        const Printer printer = printerOf(options, names.get());
        const Reader reader = readerOf(std::as_bytes(std::span(slots)));
        sonaprobe_set_ticks_per_microsecond(reader.get(), options.divisor);
        for (const TraceRecord& slot : slots) {
            expected.takeSlot(slot);
            const std::string line = collected.take();
            const sonaprobe_event* event = nullptr;
            if (slot.debugid == kDivisorMarker || slot.debugid == kInvalidMarker) continue;
            ASSERT_EQ(sonaprobe_next(reader.get(), &event), 1);
            const char* text = nullptr;
            size_t length = 0;
            ASSERT_EQ(sonaprobe_print(printer.get(), event, &text, &length), line.empty() ? 0 : 1);
            if (line.empty()) continue;
            ASSERT_EQ(differential::withoutClock(std::string(text, length) + '\n'),
                      differential::withoutClock(line))
                << options.text() << '\n'
                << differential::textOf(slot);
        }
    }
}

TEST(Line, OptionsAreCheckedAndSettledByTheFirstLine) {
    const Printer printer = newPrinter();
    const auto set = [&](int option, int value) {
        return sonaprobe_printer_set(printer.get(), static_cast<sonaprobe_line_option>(option),
                                     value);
    };
    EXPECT_EQ(set(SONAPROBE_LINE_VERBOSE, 2), -EINVAL);
    EXPECT_EQ(set(SONAPROBE_LINE_TIME, 3), -EINVAL);
    EXPECT_EQ(set(SONAPROBE_LINE_TIME, -1), -EINVAL);
    EXPECT_EQ(set(13, 0), -EINVAL);
    EXPECT_EQ(sonaprobe_printer_filter_out(printer.get(), 64), -EINVAL);
    EXPECT_EQ(sonaprobe_printer_filter_all_except(printer.get(), 64), -EINVAL);
    EXPECT_EQ(set(SONAPROBE_LINE_TIME, SONAPROBE_TIME_NONE), 0);

    const TraceRecord record = slotOf(kSomeStart);
    const Reader reader = readerOf(std::as_bytes(std::span(&record, 1)));
    EXPECT_NE(linesOf(reader.get(), printer.get()), "");
    EXPECT_EQ(set(SONAPROBE_LINE_VERBOSE, 1), -EBUSY);
    EXPECT_EQ(sonaprobe_printer_filter_out(printer.get(), 1), -EBUSY);
    EXPECT_EQ(sonaprobe_printer_set_names(printer.get(), nullptr), -EBUSY);
}

TEST(Line, ResetIndentationPutsTheNextLineAtTheLeft) {
    const TraceRecord starts[] = {slotOf(kSomeStart), slotOf(kSomeStart)};
    const Reader reader = readerOf(std::as_bytes(std::span(starts)));
    const Printer printer = newPrinter();
    sonaprobe_printer_set(printer.get(), SONAPROBE_LINE_TIME, SONAPROBE_TIME_NONE);
    const sonaprobe_event* event = nullptr;
    const char* line = nullptr;
    sonaprobe_next(reader.get(), &event);
    ASSERT_EQ(sonaprobe_print(printer.get(), event, &line, nullptr), 1);
    const std::string first = line;
    sonaprobe_next(reader.get(), &event);
    sonaprobe_printer_reset_indentation(printer.get());
    ASSERT_EQ(sonaprobe_print(printer.get(), event, &line, nullptr), 1);
    EXPECT_EQ(line, first);
    ASSERT_EQ(sonaprobe_print(printer.get(), event, &line, nullptr), 1);
    EXPECT_NE(line, first);
}

TEST(Line, NamesAreFoundByCode) {
    const Names names = namesOf("0x05250000 First\n0x5250004\tSecond\n");
    EXPECT_STREQ(sonaprobe_name_of_code(names.get(), 0x05250000), "First");
    EXPECT_STREQ(sonaprobe_name_of_code(names.get(), 0x05250004), "Second");
    EXPECT_EQ(sonaprobe_name_of_code(names.get(), 0x05250008), nullptr);
    sonaprobe_names* none = nullptr;
    EXPECT_EQ(sonaprobe_open_names(&none, "/no/such/file"), -ENOENT);
    EXPECT_EQ(sonaprobe_open_names(&none, "/"), -EISDIR);
    EXPECT_EQ(none, nullptr);
}

}  // namespace
}  // namespace sonaprobe::library
