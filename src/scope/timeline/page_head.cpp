// Puts the head's parts into JSON.

#include "scope/timeline/page_head.h"

#include <algorithm>
#include <map>

#include "scope/event_text.h"
#include "scope/timeline/bars.h"
#include "scope/units.h"
#include "scope/why_report.h"

namespace sonaprobe::scope::timeline {

namespace {

constexpr uint32_t kMostProcessors = 256;  // those beyond count as the last one

// By thread: the driver of most of its records.
std::vector<std::string> driversOf(size_t threads, const EventTables& tables) {
    std::vector<std::map<std::string, uint64_t>> records(threads);
    for (const Symbol& symbol : tables.symbols()) {
        records[symbol.thread][tables.driverOf(symbol.event)] += symbol.records;
    }
    std::vector<std::string> drivers(threads);
    for (size_t thread = 0; thread < threads; ++thread) {
        if (records[thread].empty()) continue;
        const auto byCount = [](const auto& entry) { return entry.second; };
        drivers[thread] = std::ranges::max_element(records[thread], {}, byCount)->first;
    }
    return drivers;
}

// What was merged, and how to see it whole.
void tellOfMerged(Json& notes, const Thinning& thinning, const std::string& title,
                  const Overview& overview) {
    const std::string stretch = durationText(thinning.stretch);
    notes.push_back("Thinned: " + countText(thinning.merged) + " of " +
                    countText(thinning.merged + thinning.kept) +
                    " records are merged, of calls shorter than " + stretch +
                    " that began in the same " + stretch +
                    " as a longer one of their thread. They are drawn as one; search, tables and "
                    "statistics pass them over. Failures, the longest calls and what is near a "
                    "dropout are whole.");
    const auto [from, to] = overview.mostMerged();
    const bool isPlain = title.find('\'') == std::string::npos;
    const std::string file = isPlain ? "'" + title + "'" : "FILE";
    notes.push_back(
        "To see a stretch of it whole, cut it out. Most was merged in this one: "
        "sonascope timeline " +
        file + " --from " + std::to_string(from) + "ns --to " + std::to_string(to) +
        "ns -o part.html");
}

}  // namespace

void ThreadFacts::add(Nanoseconds time, uint32_t processor) {
    if (records++ == 0) begin = time;
    end = time;
    processor = std::min(processor, kMostProcessors - 1);
    if (processor >= processors.size()) processors.resize(processor + 1);
    ++processors[processor];
}

Json lanesOf(const std::vector<ThreadFacts>& threads, const IoTrace& io,
             const EventTables& tables) {
    // Of a file that grows, either reading may have seen more threads than the other.
    std::vector<uint8_t> isIo(std::max(threads.size(), io.threadIds.size()));
    for (const IoThread& thread : io.threads) isIo[thread.thread] = 1;
    const std::vector<std::string> drivers = driversOf(threads.size(), tables);
    std::vector<uint32_t> order;
    for (uint32_t thread = 0; thread < threads.size(); ++thread) {
        if (threads[thread].records > 0) order.push_back(thread);
    }
    std::ranges::stable_sort(order, [&](uint32_t left, uint32_t right) {
        if (isIo[left] != isIo[right]) return isIo[left] > isIo[right];
        return threads[left].busy > threads[right].busy;
    });
    Json lanes = Json::array();
    for (const uint32_t thread : order) {
        const ThreadFacts& facts = threads[thread];
        lanes.push_back(
            {{"kind", isIo[thread] != 0 ? "io" : "thread"},
             {"thread", thread},
             {"id", wordText(facts.id)},
             {"name", "thread " + shortWordText(facts.id)},
             {"depth", std::min(facts.depth, kDeepest + 1)},
             {"records", facts.records},
             {"busy", facts.busy},
             {"processor", std::ranges::max_element(facts.processors) - facts.processors.begin()},
             {"driver", drivers[thread]},
             {"begin", facts.begin},
             {"end", facts.end}});
    }
    return lanes;
}

Json dropoutsOf(const IoAnswer& answer, const std::vector<ThreadFacts>& threads, const Json& lanes,
                const SlotNumbers& records, const CodeNames& names) {
    std::map<uint64_t, size_t> laneOf;  // by thread id
    for (size_t lane = 0; lane < lanes.size(); ++lane) {
        laneOf[threads[lanes[lane]["thread"].get<uint32_t>()].id] = lane;
    }
    Json list = Json::array();
    for (const Dropout& dropout : answer.dropouts) {
        const auto record = records.placeOf(dropout.slot);
        if (!record) continue;
        const Verdict& verdict = dropout.verdict;
        Json entry{{"record", *record},
                   {"time", dropout.time},
                   {"lane", laneOf.at(dropout.thread)},
                   {"lacking", dropout.lacking.value_or(0)},
                   {"cause", kDropoutCauses.at(static_cast<size_t>(verdict.cause))},
                   {"meaning", meaningOf(verdict)},
                   {"certainty", kCertainties.at(static_cast<size_t>(verdict.certainty))}};
        if (verdict.culprit) {
            const Culprit& culprit = *verdict.culprit;
            entry["culprit"] = culprit.code ? eventText(*culprit.code, names) + ", thread " +
                                                  shortWordText(culprit.thread)
                                            : "slot " + countText(culprit.slot);
            if (const auto place = records.placeOf(culprit.slot)) entry["culpritRecord"] = *place;
        }
        Json& evidence = entry["evidence"] = Json::array();
        for (const uint64_t slot : verdict.evidence) {
            if (const auto place = records.placeOf(slot)) evidence.push_back(*place);
        }
        list.push_back(std::move(entry));
    }
    return list;
}

Json notesOf(const IoAnswer& answer, uint64_t records, bool isPart, const Thinning& thinning,
             const std::string& title, const Overview& overview) {
    Json notes = Json::array();
    if (isPart) {
        notes.push_back("A part of the trace: " + countText(records + thinning.merged) +
                        " of its " + countText(answer.io.records) + " records.");
    }
    if (thinning.merged > 0) tellOfMerged(notes, thinning, title, overview);
    for (const std::string& limit : limitsOf(answer.io, answer.threads)) {
        notes.push_back(limit);
    }
    return notes;
}

}  // namespace sonaprobe::scope::timeline
