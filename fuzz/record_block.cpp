// A block of the timeline's page, packed and read back: ticks, processors and words are those of
// the records that went in.
//
// An input is two bytes for the number of records and of their kinds, then slots, which begin anew
// where they end.

#include "scope/timeline/record_block.h"

#include <map>
#include <unordered_map>
#include <vector>

#include "fuzz.h"
#include "page_reader.h"

using namespace sonaprobe;
using namespace sonaprobe::scope::timeline;
using fuzz::ColumnReader;
using fuzz::Reader;
using fuzz::require;

namespace {

constexpr uint8_t kAllWords = 0x0F;
constexpr uint8_t kLong = 254;

struct Given {
    std::vector<TraceRecord> records;
    RecordBlock block;
};

Given givenBy(fuzz::Input& input) {
    Given given;
    auto& [all, block] = given;
    // Codings are chosen by the first 512 of a column.
    const auto length = input.number<uint8_t>();
    const size_t records = length < kLong ? size_t{1} + length % 32 : 600;
    const uint32_t kinds = uint32_t{1} + input.number<uint8_t>() % 16;
    const std::span<const uint8_t> bytes = input.rest();
    std::map<uint32_t, uint32_t> places;  // of kinds
    for (size_t i = 0; i < records; ++i) {
        TraceRecord record{};
        for (size_t k = 0; k < sizeof record && !bytes.empty(); ++k) {
            reinterpret_cast<uint8_t*>(&record)[k] = bytes[(i * sizeof record + k) % bytes.size()];
        }
        const uint32_t kind = record.debugid % kinds;
        const auto [place, isNew] = places.try_emplace(kind, block.symbols.size());
        if (isNew) block.symbols.push_back({kind, kind % 5, 0, kAllWords});
        block.add(record, place->second);
        all.push_back(record);
    }
    block.segments.push_back({.index = 0, .tick = all[0].timestamp / 2});
    return given;
}

// The half words of one kind's column, as its coding foretells them.
std::vector<uint32_t> halves(Reader& heading, ColumnReader& columns,
                             const std::vector<uint32_t>& ticks) {
    enum { kConstant, kValue, kDelta, kSlope, kAfterTick, kDictionary };
    const uint8_t coding = heading.byte();
    require(coding <= kDictionary, "the coding is one of six");
    std::vector<uint32_t> dictionary;
    if (coding == kConstant) {
        return std::vector<uint32_t>(ticks.size(), static_cast<uint32_t>(heading.number()));
    }
    if (coding == kDictionary) {
        dictionary.resize(heading.number());
        for (uint32_t& value : dictionary) value = static_cast<uint32_t>(heading.number());
    }
    std::vector<uint32_t> values;
    uint32_t before = 0;
    uint32_t step = 0;
    for (const uint32_t tick : ticks) {
        if (coding == kDictionary) {
            values.push_back(dictionary.at(columns.next()));
            continue;
        }
        const auto stored = static_cast<uint32_t>(columns.nextSigned());
        const uint32_t base = coding == kDelta       ? before
                              : coding == kSlope     ? before + step
                              : coding == kAfterTick ? tick + before
                                                     : 0;
        const uint32_t value = base + stored;
        step = value - before;
        before = coding == kAfterTick ? value - tick : value;
        values.push_back(value);
    }
    return values;
}

void checkKinds(const RecordBlock& block, ColumnReader& columns) {
    constexpr uint32_t kPairs = 1 << 16;
    std::vector<uint32_t> afterOne(block.symbols.size() + 1, UINT32_MAX);
    std::unordered_map<uint32_t, uint32_t> afterTwo;
    uint32_t before = 0;
    uint32_t twoBefore = 0;
    for (size_t i = 0; i < block.records; ++i) {
        const uint32_t expected = block.local[i];
        uint32_t& byOne = afterOne[before];
        uint32_t& byTwo =
            afterTwo.try_emplace((twoBefore * 40503 + before) % kPairs, UINT32_MAX).first->second;
        const uint64_t stored = columns.next();
        const uint64_t local = stored == 0 ? byTwo : stored == 1 ? byOne : stored - 2;
        require(local == expected, "the kinds are those of the records");
        byOne = byTwo = expected;
        twoBefore = before;
        before = expected + 1;
    }
}

void checkWords(const Given& given, Reader& heading, ColumnReader& columns) {
    const auto& [records, block] = given;
    for (uint32_t kind = 0; kind < block.symbols.size(); ++kind) {
        std::vector<const TraceRecord*> mine;
        std::vector<uint32_t> ticks;
        for (size_t i = 0; i < records.size(); ++i) {
            if (block.local[i] != kind) continue;
            mine.push_back(&records[i]);
            ticks.push_back(static_cast<uint32_t>(mine.back()->timestamp));
        }
        for (const auto word :
             {&TraceRecord::arg1, &TraceRecord::arg2, &TraceRecord::arg3, &TraceRecord::arg4}) {
            const std::vector<uint32_t> low = halves(heading, columns, ticks);
            const std::vector<uint32_t> high = halves(heading, columns, ticks);
            for (size_t i = 0; i < mine.size(); ++i) {
                require((uint64_t{high[i]} << 32 | low[i]) == mine[i]->*word,
                        "the words are those of the records");
            }
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const Given given = givenBy(input);
    const auto& [records, block] = given;
    const std::string bytes = packed(block);

    Reader all(bytes);
    Reader heading = all.part(all.number());
    ColumnReader columns(all);
    require(heading.number() == records.size(), "all records are told");
    require(heading.number() == block.firstSlot, "the first slot is told");
    require(heading.number() == block.symbols.size(), "all kinds are told");
    for (const LocalSymbol& symbol : block.symbols) {
        require(heading.number() == symbol.symbol && heading.number() == symbol.depth,
                "a kind is as it was");
    }
    require(heading.number() == 1 && heading.number() == 0, "there is one segment");
    uint64_t tick = heading.number();
    require(heading.number() == 0 && heading.number() == block.segments[0].divisor,
            "the segment is as it was");
    for (size_t list = 0; list < 3; ++list) require(heading.number() == 0, "other lists are empty");

    checkKinds(block, columns);
    for (const TraceRecord& record : records) {
        tick += static_cast<uint64_t>(columns.nextSigned());
        require(tick == record.timestamp, "the ticks are those of the records");
    }
    std::map<uint32_t, uint32_t> lastOf;  // processors, by thread
    for (size_t i = 0; i < records.size(); ++i) {
        uint32_t& last = lastOf[block.symbols[block.local[i]].thread];
        last += static_cast<uint32_t>(columns.nextSigned());
        require(last == records[i].cpuid, "the processors are those of the records");
    }
    checkWords(given, heading, columns);
    require(heading.atEnd(), "the heading is read");
    columns.requireEnd();
    return 0;
}
