// sonaprobe-sim post: posts the records of a raw trace file at once.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/standin/producer.h"
#include "record/trace_record.h"
#include "sim/arguments.h"
#include "sim/messages.h"

namespace sonaprobe::sim {
namespace {

struct Tally {
    uint64_t records;
    uint64_t logged;
};

// Posts slot by slot up to the end of the file; a last slot that is cut short is no record.
Tally postAll(std::FILE* file, standin::Producer& producer) {
    Tally tally{};
    TraceRecord record{};
    while (std::fread(&record, sizeof record, 1, file) == 1) {
        if (record.debugid == kDivisorMarker) continue;
        standin::RecordWords words;
        std::memcpy(words.data(), &record, sizeof words);
        tally.records++;
        if (standin::post(producer, words)) tally.logged++;
    }
    return tally;
}

}  // namespace

int runPost(Arguments arguments) {
    const char* path = nullptr;
    const Operand operands[] = {{"FILE", &path}};
    if (!readArguments(arguments, operands, {})) return 1;

    standin::Producer producer;
    if (!standin::attachProducer(producer)) return facilityFailure("post records", errno);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"),
                                                               &std::fclose);
    if (file == nullptr) {
        complain("cannot open %s: %s", path, std::strerror(errno));
        return 1;
    }
    const Tally tally = postAll(file.get(), producer);
    const int readError = std::ferror(file.get()) != 0 ? errno : 0;
    printLogged(tally.logged, tally.records);
    if (readError == 0) return 0;
    complain("cannot read %s to its end: %s", path, std::strerror(readError));
    return 1;
}

}  // namespace sonaprobe::sim
