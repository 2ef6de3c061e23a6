// Files that are damaged anyhow: what is found in them follows each other without gaps, however the
// bytes come in, and what a repair keeps is a sound trace that a second repair keeps whole.

#include <vector>

#include "analysis/slot_repair.h"
#include "analysis/trace_report.h"
#include "fuzz.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

using Bytes = std::span<const std::byte>;

bool same(const Found& one, const Found& other) {
    return one.what == other.what && one.order == other.order && one.offset == other.offset &&
           one.length == other.length &&
           (!one.isSlot() || std::memcmp(&one.slot, &other.slot, sizeof one.slot) == 0);
}

// Everything in the file, whose bytes come in pieces of at most `piece` bytes; records without
// doubt at once where `byRun` says so.
std::vector<Found> allIn(Bytes bytes, size_t piece, bool byRun, bool* isTrace) {
    SlotFinder finder;
    std::vector<Found> all;
    const auto takeRun = [&] {
        if (!byRun) return;
        const RecordRun run = finder.plainRecords();
        for (const TraceRecord& record : run.records) {
            const uint64_t end = all.back().offset + all.back().length;
            all.push_back({Found::What::record, ByteOrder::own, end, sizeof record, record});
        }
    };
    const auto take = [&] {
        takeRun();
        while (const auto found = finder.next()) {
            all.push_back(*found);
            takeRun();
        }
    };
    while (!bytes.empty()) {
        const Bytes now = bytes.first(std::min(piece, bytes.size()));
        bytes = bytes.subspan(now.size());
        finder.feed(now);
        take();
    }
    finder.end();
    take();
    *isTrace = finder.isTrace();
    return all;
}

std::vector<TraceRecord> repaired(std::vector<Found> all) {
    SlotRepair repair;
    std::vector<TraceRecord> kept;
    bool again = true;
    while (again) {
        kept.clear();
        for (const Found& found : all) {
            if (repair.take(found)) kept.push_back(found.slot);
        }
        require(repair.kept() == kept.size(), "what is kept is counted");
        again = repair.finish();
        bool isTrace = false;
        if (again) all = allIn(std::as_bytes(std::span(kept)), SIZE_MAX, false, &isTrace);
    }
    return kept;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const size_t piece = size_t{1} + input.number<uint8_t>();
    const Bytes bytes = std::as_bytes(input.rest());

    bool isTrace = false;
    const std::vector<Found> all = allIn(bytes, bytes.size() + 1, false, &isTrace);
    uint64_t end = 0;
    for (const Found& found : all) {
        require(found.offset == end, "nothing is left out or told twice");
        require(found.length > 0, "each thing has bytes");
        end += found.length;
    }
    require(end == bytes.size(), "the last thing ends where the file does");

    bool isTraceInPieces = false;
    const std::vector<Found> inPieces = allIn(bytes, piece, true, &isTraceInPieces);
    require(std::ranges::equal(all, inPieces, same), "pieces and runs give the same");
    require(isTrace == isTraceInPieces, "pieces and runs are the same kind of file");

    TraceReport report(true);
    for (const Found& found : all) report.take(found);
    report.finish();
    require(report.slots().records() <= all.size(), "records are among what is found");

    if (!isTrace) return 0;
    const std::vector<TraceRecord> once = repaired(all);
    const Bytes sound = std::as_bytes(std::span(once));
    const std::vector<TraceRecord> twice = repaired(allIn(sound, SIZE_MAX, false, &isTrace));
    require(std::ranges::equal(sound, std::as_bytes(std::span(twice))),
            "a second repair changes nothing");
    return 0;
}
