// Random records.

#include "record_maker.h"

#include <array>
#include <cinttypes>
#include <cstdio>

#include "code_file.h"
#include "events/class_table.h"
#include "events/decoders/decoders.h"

namespace sonaprobe::differential {

RecordMaker::RecordMaker(Random& random) : random_(random) {
    std::vector<const Decoder*> all(kClassTable.begin(), kClassTable.end());
    all.push_back(&decoders::kAudioServer);
    for (const Decoder* decoder : all) {
        if (decoder == nullptr) continue;
        uint32_t code = 0;
        for (const Row& row : decoder->rows) {
            if (row.isEvent()) code = row.code;
            if (row.isEvent()) continue;
            texts_.push_back(&row);
            codes_.push_back(code);
        }
    }
}

TraceRecord RecordMaker::make() {
    TraceRecord record{};
    now_ = random_.oneIn(40) ? word() : now_ + random_.below(3'000'000);
    record.timestamp = now_;
    for (uint64_t* argument :
         {&record.arg1, &record.arg2, &record.arg3, &record.arg4, &record.arg5}) {
        *argument = word();
    }
    record.cpuid = static_cast<uint32_t>(random_.oneIn(8) ? random_.bits() : random_.below(120));
    if (random_.oneIn(3)) {
        record.debugid = debugid();
    } else {
        meetConditionOf(record);
    }
    return record;
}

// Codes of no text: unknown events, all classes, the neighbours of the audio words.
uint32_t RecordMaker::debugid() {
    const auto low = static_cast<uint32_t>(random_.bits());
    switch (random_.below(6)) {
        case 0: return low;
        case 1: return 0x21040000 | (low & (random_.oneIn(2) ? 0x1F : 0x7FF));
        case 2: return random_.oneOf({0x05230000U, 0x05250000U, 0x21050000U}) | (low & 0xFFFF);
        case 3: {
            const auto codes = namedCodes();
            return codes[random_.below(codes.size())] + low % 4;
        }
        case 4: return codes_[random_.below(codes_.size())] + 4 * (low % 3) + low / 4 % 4;
        default: return 0x05240000 | (low & 0xFFFF);
    }
}

uint64_t RecordMaker::word() {
    const uint64_t bits = random_.bits();
    switch (random_.below(8)) {
        case 0: return 0;
        case 1: return bits;
        case 2: return bits % 300;
        case 3: return bits >> bits % 64;
        case 4: return ~(bits >> bits % 64);
        case 5: return uint64_t{1} << bits % 64;
        case 6: return bits << 32 | random_.below(16);
        default:
            return random_.oneOf({UINT64_MAX, uint64_t{INT64_MAX}, uint64_t{1} << 63,
                                  uint64_t{UINT32_MAX}, uint64_t{INT32_MAX}, uint64_t{0x80000000},
                                  uint64_t{1} << 32, uint64_t{999'999'999}, uint64_t{0x68646163}});
    }
}

// Most of the time, that is: some records miss the condition, or the qualifier.
void RecordMaker::meetConditionOf(TraceRecord& record) {
    const size_t which = random_.below(texts_.size());
    const Condition& condition = texts_[which]->condition;
    uint32_t qualifier = 0;
    do {
        qualifier = static_cast<uint32_t>(random_.below(4));
    } while ((texts_[which]->qualifiers >> qualifier & 1) == 0 && !random_.oneIn(8));
    record.debugid = codes_[which] | qualifier;
    if (condition.test != Test::equals || random_.oneIn(8)) return;

    const std::array<uint64_t*, 5> words{&record.arg1, &record.arg2, &record.arg3, &record.arg4,
                                         &record.arg5};
    uint64_t& word = *words.at(condition.slice.word - 1U);
    const unsigned shift = condition.slice.dropLow - condition.slice.dropHigh;
    const uint64_t mask = UINT64_MAX >> condition.slice.dropLow << shift;
    word = (word & ~mask) | condition.value << shift;
}

std::string textOf(const TraceRecord& record) {
    std::array<char, 256> text{};
    std::snprintf(text.data(), text.size(),
                  "0x%08X t=%" PRIu64 " a1=0x%" PRIx64 " a2=0x%" PRIx64 " a3=0x%" PRIx64
                  " a4=0x%" PRIx64 " a5=0x%" PRIx64 " cpu=%" PRIu32,
                  record.debugid, record.timestamp, record.arg1, record.arg2, record.arg3,
                  record.arg4, record.arg5, record.cpuid);
    return text.data();
}

}  // namespace sonaprobe::differential
