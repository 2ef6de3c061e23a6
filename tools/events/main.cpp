// sonaprobe-events: prints what the decoder tables hold.

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "events/catalog.h"
#include "events/markdown.h"
#include "events/meaning_check.h"
#include "events/sample_record.h"

namespace {

using namespace sonaprobe;
using namespace sonaprobe::events;

// Words of up to four digits are easier to read as decimals, the others as hexadecimal digits.
void printWord(unsigned number, uint64_t word) {
    if (word == 0) return;
    std::printf(word < 10'000 ? " a%u=%" PRIu64 : " a%u=0x%" PRIx64, number, word);
}

void printRecord(const TraceRecord& record) {
    std::printf("0x%08X", record.debugid);
    unsigned number = 0;
    for (const uint64_t word : {record.arg1, record.arg2, record.arg3, record.arg4, record.arg5}) {
        printWord(++number, word);
    }
    std::putchar('\n');
}

// Each class after a comment that names it, each event after an empty line.
void printRecords() {
    for (const TracedClass& traced : tracedClasses()) {
        uint32_t lastCode = 0;
        const auto records = sampleRecords(traced);
        if (!records.empty()) std::printf("# %s\n", traced.title().c_str());
        for (const TraceRecord& record : records) {
            if (codeOf(record.debugid) != lastCode) std::putchar('\n');
            lastCode = codeOf(record.debugid);
            printRecord(record);
        }
        if (!records.empty()) std::putchar('\n');
    }
}

// "20 34": a class and how many events it has.
void printCounts() {
    for (const TracedClass& traced : tracedClasses()) {
        std::printf("%s %zu\n", traced.id.c_str(), eventsOf(traced).size());
    }
}

constexpr const char* kHelp =
    "usage: sonaprobe-events markdown|records|counts\n\n"
    "  markdown  the reference of all events, docs/events.md\n"
    "  records   records that make each text print, as text\n"
    "  counts    the number of events of each class\n";

}  // namespace

int main(int argc, char** argv) {
    const std::string_view what = argc == 2 ? argv[1] : "";
    if (what == "markdown") {
        const std::string fault =
            faultOf(told(tracedClasses()), meanings::allMeanings(), meanings::fieldGroups());
        if (!fault.empty()) {
            std::fprintf(stderr, "sonaprobe-events: src/meanings: %s\n", fault.c_str());
            return EXIT_FAILURE;
        }
        printMarkdown();
    } else if (what == "records") {
        printRecords();
    } else if (what == "counts") {
        printCounts();
    } else if (what == "help" || what == "--help" || what == "-h") {
        std::fputs(kHelp, stdout);
    } else {
        std::fputs(
            "sonaprobe-events: give one of markdown, records, counts; see sonaprobe-events "
            "--help\n",
            stderr);
        return EXIT_FAILURE;
    }
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return EXIT_SUCCESS;
    std::fputs("sonaprobe-events: cannot write to standard output\n", stderr);
    return EXIT_FAILURE;
}
