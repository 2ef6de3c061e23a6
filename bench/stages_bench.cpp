// What each stage of a record's road costs, and which text of all costs most. Lines go to
// /dev/null, the figures to standard error.

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <unistd.h>
#include <vector>

#include "events/catalog.h"
#include "events/sample_record.h"
#include "events/spelling.h"
#include "lines/code_names.h"
#include "lines/line_printer.h"
#include "lines/prefix.h"
#include "rawfile/raw_writer.h"
#include "rawfile/slot_reader.h"

namespace sonaprobe {
namespace {

using benchmark::State;

constexpr TraceRecord kRecord{.timestamp = 3'600'286'873'000,
                              .arg1 = 0xffffff8051214000,
                              .arg2 = 44100ULL << 32 | 24,
                              .arg3 = 0xffffff805125a800,
                              .arg4 = 0x1200'69610001,
                              .arg5 = 0x1c3a,
                              .debugid = 0,
                              .cpuid = 3,
                              .reserved = 0};

constexpr uint32_t kSilentClass = 0x05240800;
constexpr uint64_t kTicksBetween = 5'347'000;
constexpr uint64_t kFewTicksBetween = 13'000;

TraceRecord recordOf(uint32_t debugid) {
    TraceRecord record = kRecord;
    record.debugid = debugid;
    return record;
}

LineOptions everything() {
    LineOptions options;
    options.verbose = 1;
    options.includeHAL = 1;
    return options;
}

OutputLine& nowhere() {
    static OutputLine line({.write = [](void*, const char* text, size_t length) {
        std::fwrite(text, 1, length, stdout);
    }});
    return line;
}

// Time goes on, a delta of seven digits and less, as in a trace.
void printOften(State& state, const LineOptions& options, TraceRecord record) {
    LinePrinter printer(options, nowhere());
    for (auto _ : state) {
        record.timestamp += kTicksBetween;
        printer.print(record);
        benchmark::ClobberMemory();
    }
}

void recordOfFilteredClass(State& state) {
    LineOptions options = everything();
    options.filterOut.insert(20);
    printOften(state, options, recordOf(0x05245028));
}
BENCHMARK(recordOfFilteredClass);

void recordOfSilentClass(State& state) { printOften(state, everything(), recordOf(kSilentClass)); }
BENCHMARK(recordOfSilentClass);

void decodeAlone(State& state) {
    const TraceRecord record = recordOf(0x05245028);
    for (auto _ : state) benchmark::DoNotOptimize(decode(record));
}
BENCHMARK(decodeAlone);

void timeText(State& state, uint32_t mode, uint64_t ticksBetween) {
    EventTime time;
    char text[kEventTimeRoom];
    uint64_t timestamp = kRecord.timestamp;
    for (auto _ : state) {
        benchmark::DoNotOptimize(time.formatEventTime(timestamp, mode, 1000.0, text));
        timestamp += ticksBetween;
    }
}
BENCHMARK_CAPTURE(timeText, localFarApart, kLocalTime, kTicksBetween);
BENCHMARK_CAPTURE(timeText, localNear, kLocalTime, kFewTicksBetween);
BENCHMARK_CAPTURE(timeText, kernel, kKernelTime, kTicksBetween);

void prefix(State& state, uint32_t timeMode, uint32_t otherColumns) {
    LineState line{.options = everything(), .line = nowhere(), .names = {}};
    line.options.timeMode = timeMode;
    line.options.showCodes = line.options.showCpu = otherColumns;
    std::vector<TraceRecord> records(1000, recordOf(0x05245C0C));
    for (size_t i = 0; i < records.size(); ++i) records[i].timestamp += i * kTicksBetween;
    char* const begin = nowhere().cursor();
    static constexpr char kName[20 + kTextBlock] = "OrvelHDAPath::enable";
    constexpr EventName name{{kName, 20}, 12};
    size_t next = 0;
    for (auto _ : state) {
        const TraceRecord& record = records[next++ % records.size()];
        printEventPrefix(line, headerOf(record), name, record.arg1);
        nowhere().moveTo(begin);
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(prefix, withoutTime, 0, 0);
BENCHMARK_CAPTURE(prefix, asByDefault, kLocalTime, 0);
BENCHMARK_CAPTURE(prefix, allColumns, kLocalTime, 1);

// Whole lines, without time column, by what fills their texts.
void line(State& state, uint32_t debugid, uint64_t arg4) {
    LineOptions options = everything();
    options.timeMode = 0;
    options.indent = 0;
    TraceRecord record = recordOf(debugid);
    record.arg4 = arg4;
    printOften(state, options, record);
}
BENCHMARK_CAPTURE(line, plainDecimals, 0x05248CD4, 2);
BENCHMARK_CAPTURE(line, wideDecimals, 0x21040009, 512);
BENCHMARK_CAPTURE(line, hexadecimals, 0x05245C1D, 0x1234);
BENCHMARK_CAPTURE(line, pointers, 0x05249801, 0xffffff8051288000);
BENCHMARK_CAPTURE(line, words, 0x0524BC51, 1);
BENCHMARK_CAPTURE(line, fourTimes, 0x05249850, 0);
BENCHMARK_CAPTURE(line, fourCharacters, 0x0524B470, 4);
BENCHMARK_CAPTURE(line, ticks, 0x0524A804, 640);

void unclassifiedLine(State& state) { printOften(state, everything(), recordOf(0x05243015)); }
BENCHMARK(unclassifiedLine);

void basicLine(State& state) {
    LineOptions options = everything();
    options.basicFormat = 1;
    printOften(state, options, recordOf(0x05243015));
}
BENCHMARK(basicLine);

// A code of a file of 5,000 lines; every look-up has another code.
void codeNameLookup(State& state) {
    constexpr uint32_t kLines = 5000;
    CodeNames names;
    for (uint32_t i = 0; i < kLines; ++i) {
        char line[64];
        names.take(line, static_cast<size_t>(std::snprintf(
                             line, sizeof line, "0x%08x\tName_of_%u\n", 0x01300000 + 4 * i, i)));
    }
    uint32_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(names.nameOf(0x01300000 + 4 * next));
        next = next + 7 < kLines ? next + 7 : 0;
    }
}
BENCHMARK(codeNameLookup);

constexpr int64_t kFileRecords = 100'000;

// A file of records that print nothing, so that reading alone is seen.
void rawRead(State& state) {
    char path[] = "/tmp/sonaprobe-bench-XXXXXX";
    const int file = mkstemp(path);
    const std::vector<TraceRecord> records(kFileRecords, recordOf(kSilentClass));
    const size_t size = records.size() * sizeof records[0];
    if (file < 0 || ::write(file, records.data(), size) != static_cast<ssize_t>(size)) {
        state.SkipWithError("no temporary file");
    } else {
        LinePrinter printer(everything(), nowhere());
        for (auto _ : state) {
            lseek(file, 0, SEEK_SET);
            SlotReader reader(file);
            for (auto slots = reader.next(); !slots.empty(); slots = reader.next()) {
                for (const TraceRecord& slot : slots) printer.takeSlot(slot);
            }
        }
        state.SetItemsProcessed(state.iterations() * kFileRecords);
    }
    ::close(file);
    ::unlink(path);
}
BENCHMARK(rawRead);

void rawWrite(State& state) {
    char path[] = "/tmp/sonaprobe-bench-XXXXXX";
    const int file = ::mkstemp(path);
    if (file < 0) return state.SkipWithError("no temporary file");
    ::unlink(path);
    RawWriter writer(file, {.lost = [](const TraceRecord&, int) { std::abort(); }});
    const TraceRecord record = recordOf(0x05245C0C);
    for (auto _ : state) {
        lseek(file, 0, SEEK_SET);
        for (int64_t i = 0; i < kFileRecords; ++i) writer.store(record);
    }
    state.SetItemsProcessed(state.iterations() * kFileRecords);
}
BENCHMARK(rawWrite);

// Every text of every class, a whole line with all its columns; the label is the slowest's code.
void slowestText(State& state) {
    constexpr int kTimes = 500;
    LineOptions options = everything();
    options.indent = 0;
    LinePrinter printer(options, nowhere());
    std::vector<TraceRecord> records;
    for (const events::TracedClass& traced : events::tracedClasses()) {
        const auto samples = events::sampleRecords(traced);
        records.insert(records.end(), samples.begin(), samples.end());
    }
    std::vector<double> least(records.size(), 1e9);
    const auto seconds = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    for (auto _ : state) {
        for (size_t i = 0; i < records.size(); ++i) {
            const double begin = seconds();
            for (int n = 0; n < kTimes; ++n) {
                records[i].timestamp += kTicksBetween;
                printer.print(records[i]);
            }
            least[i] = std::min(least[i], (seconds() - begin) / kTimes);
        }
        const auto slowest = std::ranges::max_element(least);
        state.SetIterationTime(*slowest);
        state.SetLabel(
            events::spellCode(records[static_cast<size_t>(slowest - least.begin())].debugid));
    }
}
BENCHMARK(slowestText)->UseManualTime()->Iterations(20);

}  // namespace
}  // namespace sonaprobe

int main(int argc, char** argv) {
    std::cout.rdbuf(std::cerr.rdbuf());
    static char buffer[65536];
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return EXIT_FAILURE;
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
