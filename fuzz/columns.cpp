// Numbers of the timeline's page, alone and in a column, read back as they were.
//
// An input is numbers: a byte for how many bytes one has and how often the column has it, then it.

#include "scope/timeline/columns.h"

#include <string>
#include <vector>

#include "fuzz.h"
#include "page_reader.h"

using namespace sonaprobe;
using namespace sonaprobe::scope::timeline;
using fuzz::require;

namespace {

struct Run {
    uint64_t number = 0;
    size_t count = 1;
};

std::vector<Run> runsOf(fuzz::Input input) {
    std::vector<Run> runs;
    while (!input.atEnd()) {
        const auto how = input.number<uint8_t>();
        Run& run = runs.emplace_back();
        run.count += (how >> 4) % 4;
        for (const uint8_t byte : input.bytes(how % 9)) run.number = run.number << 8 | byte;
    }
    return runs;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<Run> runs = runsOf({data, size});
    Columns columns;
    std::string heading;
    for (const auto& [number, count] : runs) {
        putNumber(heading, number);
        putSigned(heading, static_cast<int64_t>(number));
        for (size_t i = 0; i < count; ++i) columns.put(number);
    }

    const std::string bytes = columns.below(heading);
    fuzz::Reader all(bytes);
    fuzz::Reader head = all.part(all.number());
    fuzz::ColumnReader column(all);
    for (const auto& [number, count] : runs) {
        require(head.number() == number, "a number reads back");
        require(fuzz::signedOf(head.number()) == static_cast<int64_t>(number), "a signed one, too");
        for (size_t i = 0; i < count; ++i) require(column.next() == number, "a column reads back");
    }
    require(head.atEnd(), "the heading is read");
    column.requireEnd();
    return 0;
}
