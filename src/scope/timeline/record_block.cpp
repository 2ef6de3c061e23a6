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
template <class Put>
void code(const Column& column, Coding coding, const Put& put) {
    Half before = 0;
    Half step = 0;
    for (size_t i = 0; i < column.values.size(); ++i) {
        const Half value = column.values[i];
        Half base = 0;
        switch (coding) {
            case Coding::delta: base = before; break;
            case Coding::slope: base = before + step; break;
            case Coding::afterTick: base = column.ticks[i] + before; break;
            default: break;
        }
        put(zigzag(static_cast<int32_t>(value - base)));
        step = value - before;
        before = coding == Coding::afterTick ? value - column.ticks[i] : value;
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
    tsl::robin_map<uint32_t, uint32_t> lastOf;  // by thread
    for (size_t i = 0; i < block.records.size(); ++i) {
        uint32_t& last = lastOf[block.symbols[block.local[i]].thread];
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
    std::vector<Half> low;
    std::vector<Half> high;
    std::vector<Half> ticks;
    for (size_t i = 0; i < block.symbols.size(); ++i) {
        const std::span<const uint32_t> mine(order.data() + begins[i], begins[i + 1] - begins[i]);
        const size_t count = mine.size();
        low.resize(count);
        high.resize(count);
        ticks.resize(count);
        for (size_t k = 0; k < count; ++k) {
            ticks[k] = static_cast<Half>(block.records[mine[k]].timestamp);
        }
        for (const unsigned word : {0U, 1U, 2U, 3U}) {
            if ((block.symbols[i].words >> word & 1) == 0) continue;
            for (size_t k = 0; k < count; ++k) {
                const TraceRecord& record = block.records[mine[k]];
                const uint64_t words[] = {record.arg1, record.arg2, record.arg3, record.arg4};
                low[k] = static_cast<Half>(words[word]);
                high[k] = static_cast<Half>(words[word] >> 32);
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

    std::string bytes;
    putNumber(bytes, heading.size());
    bytes += heading;
    columns.appendTo(bytes);
    return bytes;
}

}  // namespace sonaprobe::scope::timeline
