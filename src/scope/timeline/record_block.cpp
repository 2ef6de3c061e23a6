// Chooses for each column the coding that takes least.

#include "scope/timeline/record_block.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <span>
#include <tsl/robin_map.h>
#include <utility>

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

// Gives the numbers to be stored, one after the other: to be asked for each record in turn.
template <Coding kCoding>
auto codeBy(const Column& column) {
    return [values = column.values.data(), ticks = column.ticks.data(), before = Half{0},
            step = Half{0}](size_t i) mutable {
        const Half number = kCoding == Coding::afterTick ? values[i] - ticks[i] : values[i];
        const Half base = kCoding == Coding::value   ? 0
                          : kCoding == Coding::slope ? before + step
                                                     : before;
        step = number - before;
        before = number;
        return zigzag(static_cast<int32_t>(number - base));
    };
}

// Calls take() with what gives the numbers.
template <class Take>
void code(const Column& column, Coding coding, const Take& take) {
    switch (coding) {
        case Coding::delta: return take(codeBy<Coding::delta>(column));
        case Coding::slope: return take(codeBy<Coding::slope>(column));
        case Coding::afterTick: return take(codeBy<Coding::afterTick>(column));
        default: return take(codeBy<Coding::value>(column));
    }
}

// By how many bits a number has: what it takes, at a guess, once it is deflated.
constexpr std::array<uint8_t, 33> kBits = [] {
    std::array<uint8_t, 33> cost{};
    for (size_t i = 1; i < cost.size(); ++i) {
        cost[i] = static_cast<uint8_t>(i <= 8 ? i + 1 : i + 4);
    }
    cost[0] = 1;
    return cost;
}();

// About how many bits the numbers take once they are deflated.
uint64_t costOf(const Column& column, Coding coding) {
    uint64_t bits = 0;
    code(column, coding, [&](auto numberAt) {
        for (size_t i = 0; i < column.values.size(); ++i) {
            bits += kBits[static_cast<size_t>(std::bit_width(numberAt(i)))];
        }
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
        Half differing = 0;  // bits; all are looked at, which takes less than a branch for each
        for (const Half value : column.values) differing |= value ^ first;
        if (differing == 0) {
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
                columns_->putAll(column.values.size(),
                                 [&](size_t i) { return places_.at(column.values[i]); });
                return;
            }
        }
        choose(best);
        code(column, best,
             [&](auto numberAt) { columns_->putAll(column.values.size(), numberAt); });
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
    columns.putAll(block.records, [&, locals = block.local.get()](size_t i) {
        const uint32_t local = locals[i];
        uint32_t& byOne = afterOne[before];
        uint32_t& byTwo = afterTwo[(twoBefore * 40503 + before) % kPairs];
        const uint32_t number = byTwo == local ? 0 : byOne == local ? 1 : local + 2;
        byOne = byTwo = local;
        twoBefore = before;
        before = local + 1;
        return number;
    });
}

void packTicks(const RecordBlock& block, Columns& columns) {
    // A block begins with a segment.
    for (size_t k = 0; k < block.segments.size(); ++k) {
        const size_t begin = block.segments[k].index;
        const size_t end =
            k + 1 < block.segments.size() ? block.segments[k + 1].index : block.records;
        columns.putAll(end - begin, [before = block.segments[k].tick,
                                     ticks = block.ticks.get() + begin](size_t i) mutable {
            return zigzag(static_cast<int64_t>(ticks[i] - std::exchange(before, ticks[i])));
        });
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
    columns.putAll(block.records, [&](size_t i) {
        uint32_t& last = lastOf[threadOf[block.local[i]]];
        const uint32_t processor = block.processors[i];
        return zigzag(static_cast<int32_t>(processor - std::exchange(last, processor)));
    });
}

void packWords(const RecordBlock& block, std::string& heading, Columns& columns) {
    // The records of each symbol, in their order.
    struct Entry {
        RecordBlock::Words words;
        Half tick;
    };
    std::vector<uint32_t> begins(block.symbols.size() + 1);
    for (size_t i = 0; i < block.records; ++i) ++begins[block.local[i] + 1];
    for (size_t i = 1; i < begins.size(); ++i) begins[i] += begins[i - 1];
    const auto entries = std::make_unique_for_overwrite<Entry[]>(block.records);
    std::vector<uint32_t> next = begins;
    for (size_t i = 0; i < block.records; ++i) {
        entries[next[block.local[i]]++] = {block.words[i], static_cast<Half>(block.ticks[i])};
    }

    WordPacker packer(heading, columns);
    std::vector<Half> ticks;
    std::vector<Half> low;
    std::vector<Half> high;
    for (size_t i = 0; i < block.symbols.size(); ++i) {
        const std::span mine(entries.get() + begins[i], begins[i + 1] - begins[i]);
        if (block.symbols[i].words == 0) continue;
        for (std::vector<Half>* const column : {&ticks, &low, &high}) column->resize(mine.size());
        for (size_t k = 0; k < mine.size(); ++k) ticks[k] = mine[k].tick;
        for (size_t word = 0; word < RecordBlock::Words().size(); ++word) {
            if ((block.symbols[i].words >> word & 1) == 0) continue;
            for (size_t k = 0; k < mine.size(); ++k) {
                low[k] = static_cast<Half>(mine[k].words[word]);
                high[k] = static_cast<Half>(mine[k].words[word] >> 32);
            }
            packer.pack({low, ticks});
            packer.pack({high, ticks});
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
    records = 0;
    symbols.clear();
    segments.clear();
    deeds.clear();
    failures.clear();
    gaps.clear();
}

std::string packed(const RecordBlock& block) {
    std::string heading;
    putNumber(heading, block.records);
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
