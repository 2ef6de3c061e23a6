// Chooses for each column the coding that takes least.

#include "scope/timeline/record_block.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <tsl/robin_map.h>

#include "scope/timeline/columns.h"

namespace sonaprobe::scope::timeline {

namespace {

// How a half word is foretold; the page adds what is stored.
enum class Coding : uint8_t {
    constant,    // the same in all records
    value,       // not at all
    delta,       // as in the record before
    slope,       // going on as between the two records before
    afterTick,   // as far from the record's own tick as in the record before
    dictionary,  // one of a few values
};

constexpr size_t kMostInDictionary = Columns::kFirstLength;

// The first values of a column decide on its coding.
constexpr size_t kSample = 512;

using Half = uint32_t;

// A column of half words and the low halves of its records' ticks.
struct Column {
    std::span<const Half> values;
    std::span<const Half> ticks;
};

// Calls put() with each number to be stored.
template <Coding kCoding, class Put>
void codeBy(const Column& column, const Put& put) {
    Half before = 0;
    Half step = 0;
    for (size_t i = 0; i < column.values.size(); ++i) {
        const Half value = column.values[i];
        const Half number = kCoding == Coding::afterTick ? value - column.ticks[i] : value;
        const Half base = kCoding == Coding::value   ? 0
                          : kCoding == Coding::slope ? before + step
                                                     : before;
        put(zigzag(static_cast<int32_t>(number - base)));
        step = number - before;
        before = number;
    }
}

template <class Put>
void code(const Column& column, Coding coding, const Put& put) {
    switch (coding) {
        case Coding::delta: return codeBy<Coding::delta>(column, put);
        case Coding::slope: return codeBy<Coding::slope>(column, put);
        case Coding::afterTick: return codeBy<Coding::afterTick>(column, put);
        default: return codeBy<Coding::value>(column, put);
    }
}

// About how many bits the numbers take once they are deflated.
uint64_t costOf(const Column& column, Coding coding) {
    uint64_t bits = 0;
    code(column, coding, [&](uint32_t number) {
        constexpr std::array<uint8_t, 33> kBits = [] {
            std::array<uint8_t, 33> cost{};
            for (size_t i = 1; i < cost.size(); ++i) {
                cost[i] = static_cast<uint8_t>(i <= 8 ? i + 1 : i + 4);
            }
            cost[0] = 1;
            return cost;
        }();
        bits += kBits[32U - static_cast<unsigned>(number == 0 ? 32 : __builtin_clz(number))];
    });
    return bits;
}

// The values in the order in which they first appear; nothing where there are too many.
std::vector<Half> dictionaryOf(std::span<const Half> values, tsl::robin_map<Half, Half>& places) {
    std::vector<Half> dictionary;
    places.clear();
    for (const Half value : values) {
        if (!places.try_emplace(value, static_cast<Half>(dictionary.size())).second) continue;
        if (dictionary.size() == kMostInDictionary) return {};
        dictionary.push_back(value);
    }
    return dictionary;
}

class WordPacker {
  public:
    WordPacker(std::string& heading, Columns& columns) : heading_(&heading), columns_(&columns) {}

    void pack(const Column& column) {
        const Half first = column.values.front();
        if (std::ranges::all_of(column.values, [&](Half value) { return value == first; })) {
            choose(Coding::constant);
            putNumber(*heading_, first);
            return;
        }
        const size_t count = std::min(column.values.size(), kSample);
        const Column sample{column.values.first(count), column.ticks.first(count)};
        Coding best = Coding::value;
        uint64_t least = UINT64_MAX;
        for (const Coding coding :
             {Coding::value, Coding::delta, Coding::slope, Coding::afterTick}) {
            const uint64_t cost = costOf(sample, coding);
            if (cost >= least) continue;
            least = cost;
            best = coding;
        }
        if (least > 3 * count) {
            const std::vector<Half> dictionary = dictionaryOf(column.values, places_);
            const uint64_t bits = std::bit_width(dictionary.size());
            if (!dictionary.empty() && bits * count + 40 * dictionary.size() < least) {
                choose(Coding::dictionary);
                putNumber(*heading_, dictionary.size());
                for (const Half value : dictionary) putNumber(*heading_, value);
                for (const Half value : column.values) columns_->put(places_.at(value));
                return;
            }
        }
        choose(best);
        code(column, best, [&](uint32_t number) { columns_->put(number); });
    }

  private:
    void choose(Coding coding) { heading_->push_back(static_cast<char>(coding)); }

    std::string* heading_;
    Columns* columns_;
    tsl::robin_map<Half, Half> places_;
};

// Each record is foretold by the two before it, else by the one before it.
void packSymbols(const RecordBlock& block, Columns& columns) {
    constexpr uint32_t kNone = 0xFFFFFFFF;
    constexpr size_t kPairs = 1 << 16;
    std::vector<uint32_t> afterOne(block.symbols.size() + 1, kNone);
    std::vector<uint32_t> afterTwo(kPairs, kNone);
    uint32_t before = 0;
    uint32_t twoBefore = 0;
    for (const uint32_t local : block.local) {
        uint32_t& byOne = afterOne[before];
        uint32_t& byTwo = afterTwo[(twoBefore * 40503 + before) % kPairs];
        columns.put(byTwo == local ? 0 : byOne == local ? 1 : local + 2);
        byOne = byTwo = local;
        twoBefore = before;
        before = local + 1;
    }
}

void packTicks(const RecordBlock& block, Columns& columns) {
    auto segment = block.segments.begin();
    uint64_t before = 0;
    for (size_t i = 0; i < block.records.size(); ++i) {
        const uint64_t tick = block.records[i].timestamp;
        if (segment != block.segments.end() && segment->index == i) {
            before = segment->tick;
            ++segment;
        }
        columns.put(zigzag(static_cast<int64_t>(tick - before)));
        before = tick;
    }
}

void packProcessors(const RecordBlock& block, Columns& columns) {
    // By symbol: its thread, numbered in the block.
    std::vector<size_t> threadOf;
    tsl::robin_map<uint32_t, size_t> threads;
    for (const LocalSymbol& symbol : block.symbols) {
        threadOf.push_back(threads.try_emplace(symbol.thread, threads.size()).first->second);
    }
    std::vector<uint32_t> lastOf(threads.size());
    for (size_t i = 0; i < block.records.size(); ++i) {
        uint32_t& last = lastOf[threadOf[block.local[i]]];
        columns.put(zigzag(static_cast<int32_t>(block.records[i].cpuid - last)));
        last = block.records[i].cpuid;
    }
}

void packWords(const RecordBlock& block, std::string& heading, Columns& columns) {
    // The records of each symbol, in their order.
    std::vector<uint32_t> begins(block.symbols.size() + 1);
    for (const uint32_t local : block.local) ++begins[local + 1];
    for (size_t i = 1; i < begins.size(); ++i) begins[i] += begins[i - 1];
    std::vector<uint32_t> order(block.local.size());
    std::vector<uint32_t> next = begins;
    for (size_t i = 0; i < block.local.size(); ++i) {
        order[next[block.local[i]]++] = static_cast<uint32_t>(i);
    }

    WordPacker packer(heading, columns);
    std::vector<Half> ticks;
    std::array<std::vector<Half>, 4> low;
    std::array<std::vector<Half>, 4> high;
    for (size_t i = 0; i < block.symbols.size(); ++i) {
        const std::span<const uint32_t> mine(order.data() + begins[i], begins[i + 1] - begins[i]);
        const size_t count = mine.size();
        const auto isKept = [&](size_t word) { return (block.symbols[i].words >> word & 1) != 0; };
        if (block.symbols[i].words == 0) continue;
        ticks.resize(count);
        for (size_t word = 0; word < low.size(); ++word) {
            if (!isKept(word)) continue;
            low[word].resize(count);
            high[word].resize(count);
        }
        for (size_t k = 0; k < count; ++k) {
            const TraceRecord& record = block.records[mine[k]];
            const std::array words = {record.arg1, record.arg2, record.arg3, record.arg4};
            ticks[k] = static_cast<Half>(record.timestamp);
            for (size_t word = 0; word < words.size(); ++word) {
                if (!isKept(word)) continue;
                low[word][k] = static_cast<Half>(words[word]);
                high[word][k] = static_cast<Half>(words[word] >> 32);
            }
        }
        for (size_t word = 0; word < low.size(); ++word) {
            if (!isKept(word)) continue;
            packer.pack({low[word], ticks});
            packer.pack({high[word], ticks});
        }
    }
}

// What few records have: each with how far its record is from the one before in the list.
template <class Entry, class Put>
void putList(std::string& heading, const std::vector<Entry>& entries, const Put& put) {
    putNumber(heading, entries.size());
    uint32_t before = 0;
    for (const Entry& entry : entries) {
        putNumber(heading, entry.index - before);
        before = entry.index;
        put(entry);
    }
}

}  // namespace

void RecordBlock::clear() {
    firstRecord = firstSlot = 0;
    least = latest = 0;
    records.clear();
    local.clear();
    symbols.clear();
    segments.clear();
    deeds.clear();
    failures.clear();
    gaps.clear();
}

std::string packed(const RecordBlock& block) {
    std::string heading;
    putNumber(heading, block.records.size());
    putNumber(heading, block.firstSlot);
    putNumber(heading, block.symbols.size());
    for (const LocalSymbol& symbol : block.symbols) {
        putNumber(heading, symbol.symbol);
        putNumber(heading, symbol.depth);
    }
    putList(heading, block.segments, [&](const Segment& segment) {
        putNumber(heading, segment.tick);
        putSigned(heading, segment.time);
        putNumber(heading, segment.divisor);
    });
    putList(heading, block.deeds, [&](const Deed& deed) {
        putNumber(heading, deed.closed);
        if (deed.closed == Deed::kAll) putSigned(heading, deed.time);
    });
    putList(heading, block.failures, [](const Failing&) {});
    putList(heading, block.gaps, [&](const SlotGap& gap) { putNumber(heading, gap.slots); });
    Columns columns;
    packSymbols(block, columns);
    packTicks(block, columns);
    packProcessors(block, columns);
    packWords(block, heading, columns);
    return columns.below(heading);
}

}  // namespace sonaprobe::scope::timeline
