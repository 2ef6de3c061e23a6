// Packs a trace, one record after the other.

#include "scope/timeline/packer.h"

#include <algorithm>
#include <map>
#include <set>
#include <thread>
#include <zlib.h>

#include "analysis/dropout_causes.h"
#include "analysis/event_traits.h"
#include "scope/event_text.h"
#include "scope/records.h"
#include "scope/timeline/columns.h"
#include "scope/units.h"
#include "scope/why_report.h"

namespace sonaprobe::scope::timeline {

namespace {

constexpr int kFormat = 1;
constexpr uint64_t kNoRecord = UINT64_MAX;
constexpr uint32_t kMostProcessors = 256;  // those beyond count as the last one

// The finest level has so many cells for each block's time, so that a screen of finer resolution
// shows some ten blocks. The coarsest has a cell for each pixel of the narrowest screen.
constexpr Nanoseconds kCellsOfBlock = 128;
constexpr Nanoseconds kNarrowestScreen = 400;

std::string chunkOf(const std::string& bytes) {
    return asPageText(deflated(bytes, Z_DEFAULT_COMPRESSION));
}

// Which records the slots are. Most follow each other.
class RecordNumbers {
  public:
    // In the order of slots.
    void add(uint64_t slot, uint64_t record) {
        if (runs_.empty() || slot != runs_.back().slot + (record - runs_.back().record)) {
            runs_.push_back({slot, record});
        }
        end_ = record + 1;
    }

    // kNoRecord where the page does not show it.
    uint64_t of(uint64_t slot) const {
        const auto after = std::ranges::upper_bound(runs_, slot, {}, &Run::slot);
        if (after == runs_.begin()) return kNoRecord;
        const uint64_t record = std::prev(after)->record + (slot - std::prev(after)->slot);
        return record < (after == runs_.end() ? end_ : after->record) ? record : kNoRecord;
    }

  private:
    struct Run {
        uint64_t slot;
        uint64_t record;
    };
    std::vector<Run> runs_;
    uint64_t end_ = 0;
};

// What the trace's I/O came to. It is observed in a thread of its own, some slots after the packer.
class IoAnswer {
  public:
    void take(std::span<const TraceRecord> slots) {
        wait();
        observing_ =
            std::async(std::launch::async, [this, some = std::vector(slots.begin(), slots.end())] {
                for (const TraceRecord& slot : some) observer_.take(slot);
            });
    }
    void finish() {
        wait();
        io = observer_.finish();
        timed = timeThreads(io);
        dropouts = judgeDropouts(io, timed);
    }

    IoTrace io;
    std::vector<TimedThread> timed;
    std::vector<Dropout> dropouts;

  private:
    void wait() {
        if (observing_.valid()) observing_.get();
    }

    IoObserver observer_;
    std::future<void> observing_;
};

// What the head says of a thread.
struct ThreadFacts {
    uint64_t records = 0;
    Nanoseconds begin = 0;
    Nanoseconds end = 0;
    Nanoseconds busy = 0;
    uint32_t depth = 0;
    std::vector<uint64_t> processors;  // records of each
};

class Packer final : public CallSink {
  public:
    Packer(const Survey& survey, const CodeNames& names)
        : survey_(&survey),
          tables_(names),
          pyramid_(finestOf(survey), span(survey) / kNarrowestScreen),
          overview_(survey.begin, survey.end) {}

    void take(const TraceRecord& slot);
    PackedTrace finish(const std::string& title, const IoAnswer& io);

  private:
    // An open call that is shown.
    struct Frame {
        LongBar call{};
        uint64_t block = 0;
        uint32_t row = 0;
        uint32_t depth = 0;
        bool shown = false;
    };
    struct Thread {
        std::vector<uint32_t> open;  // frames
        uint64_t seenInBlock = kNoRecord;
        ThreadFacts facts;
    };

    static Nanoseconds span(const Survey& survey) {
        return saturated(Wide{survey.end} - survey.begin);
    }
    static Nanoseconds finestOf(const Survey& survey) {
        const auto blocks = static_cast<Nanoseconds>(survey.records / RecordBlock::kRecords + 1);
        return std::min(span(survey) / blocks / kCellsOfBlock, span(survey) / kNarrowestScreen);
    }

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) override;
    void closed(const Call& call, const Call* parent, const Closing& closing) override;
    void point(const TraceRecord& record, const Moment& moment) override;
    void orphanEnd(const TraceRecord& record, const Moment& moment) override;

    Thread& threadOf(uint32_t number);
    void putPoint(const Moment& moment, uint8_t flags);
    void append(const TraceRecord& record, const Moment& moment);
    void anchor(const TraceRecord& record, Nanoseconds time);
    void putSegment(const TraceRecord& record);
    uint64_t resets() const {
        return tracker_.clock().stepsBack() + tracker_.clock().divisorChanges();
    }
    uint64_t recordNumber() const { return block_.firstRecord + block_.records.size(); }
    void flush();
    void collect(size_t most);
    Json lanes(const IoTrace& io, std::vector<uint32_t>& laneOfThread) const;
    Json dropouts(const IoAnswer& io, const std::vector<uint32_t>& laneOfThread) const;
    Json notes(const IoAnswer& io) const;
    std::string cycles(const IoTrace& trace) const;

    const Survey* survey_;
    CallTracker tracker_{*this};
    EventTables tables_;
    RecordNumbers numbers_;
    Rows rows_;
    Pyramid pyramid_;
    LongBars longBars_;
    Overview overview_;
    std::vector<Frame> frames_;
    std::vector<uint32_t> unused_;
    std::vector<Thread> threads_;

    // The record being taken.
    Event event_{};
    bool failure_ = false;
    bool shown_ = false;
    uint32_t closedNow_ = 0;
    uint32_t openedNow_ = 0;
    uint64_t resetsBefore_ = 0;
    bool resetNow_ = false;

    RecordBlock block_;
    uint64_t blockNumber_ = 0;
    uint64_t slotsSeen_ = 0;
    std::vector<uint64_t> placeInBlock_;  // by symbol: block and place after
    Segment anchor_;                      // of the line of ticks and times in force
    uint64_t anchorResets_ = UINT64_MAX;
    bool anchorIsNew_ = false;

    std::deque<std::future<std::string>> packing_;
    std::vector<std::string> blocks_;
    Json blockFacts_ = Json::array();
};

Packer::Thread& Packer::threadOf(uint32_t number) {
    if (number >= threads_.size()) threads_.resize(number + 1);
    return threads_[number];
}

void Packer::take(const TraceRecord& slot) {
    const uint64_t number = tracker_.slots();
    closedNow_ = openedNow_ = 0;
    resetsBefore_ = resets();
    resetNow_ = false;
    if (kindOf(slot) == SlotKind::record) {
        event_ = decode(slot);
        failure_ = isFailure(event_);
        shown_ = survey_->shows(number);
    }
    const Moment* const moment = tracker_.take(slot);
    if (moment == nullptr) return;
    anchor(slot, moment->time);
    if (shown_) append(slot, {bounded(moment->time), moment->slot, moment->thread});
}

uint32_t Packer::opened(const TraceRecord&, const Call& call, const Call*) {
    uint32_t place = static_cast<uint32_t>(frames_.size());
    if (unused_.empty()) {
        frames_.emplace_back();
    } else {
        place = unused_.back();
        unused_.pop_back();
    }
    Frame& frame = frames_[place];
    frame = Frame{.shown = shown_};
    if (!shown_) return place;
    ++openedNow_;
    Thread& thread = threadOf(call.thread);
    frame.depth = static_cast<uint32_t>(thread.open.size());
    frame.row = rows_.numberOf({call.thread, frame.depth, false});
    frame.block = blockNumber_;
    const uint8_t waits = call.code == kIoThread ? kWaiting : 0;
    frame.call.bar = {.begin = bounded(call.start),
                      .record = recordNumber(),
                      .event = tables_.symbol(tables_.symbolOf(event_, call.thread)).event,
                      .flags = static_cast<uint8_t>(waits | (failure_ ? kFailure : 0))};
    thread.open.push_back(place);
    thread.facts.depth = std::max(thread.facts.depth, frame.depth + 1);
    return place;
}

void Packer::closed(const Call& call, const Call*, const Closing& closing) {
    Frame& frame = frames_[call.tag];
    unused_.push_back(call.tag);
    if (!frame.shown) return;
    Thread& thread = threadOf(call.thread);
    thread.open.pop_back();
    const bool reset = resets() != resetsBefore_;
    if (!reset) ++closedNow_;
    if (reset && !std::exchange(resetNow_, true)) {
        block_.deeds.push_back(
            {static_cast<uint32_t>(block_.records.size()), Deed::kAll, closing.time});
    }

    Bar& bar = frame.call.bar;
    bar.end = bounded(closing.time);
    if (closing.how == CallEnd::cutOff) bar.flags |= kCutOff;
    if (closing.how == CallEnd::unfinished) bar.flags |= kUnfinished;
    if (closing.how == CallEnd::finished && failure_) bar.flags |= kFailure;
    const Nanoseconds length = bar.end - bar.begin;
    frame.call.self = saturated(Wide{length} - frame.call.self);
    Frame* const parent = thread.open.empty() ? nullptr : &frames_[thread.open.back()];
    if (parent != nullptr) parent->call.self = saturated(Wide{parent->call.self} + length);

    const bool waits = (bar.flags & kWaiting) != 0;
    const bool inWaiting = parent != nullptr && (parent->call.bar.flags & kWaiting) != 0;
    if (!waits && (frame.depth == 0 || (frame.depth == 1 && inWaiting))) {
        thread.facts.busy = saturated(Wide{thread.facts.busy} + length);
        overview_.addBusy(bar.begin, bar.end);
    }
    pyramid_.add(frame.row, bar);
    if (frame.block != blockNumber_ || closing.how == CallEnd::unfinished) {
        frame.call.endRecord = recordNumber();
        longBars_.add(frame.row, frame.call);
    }
}

void Packer::point(const TraceRecord&, const Moment& moment) { putPoint(moment, 0); }
void Packer::orphanEnd(const TraceRecord&, const Moment& moment) { putPoint(moment, kCutOff); }

void Packer::putPoint(const Moment& moment, uint8_t flags) {
    if (!shown_) return;
    const auto open = static_cast<uint32_t>(threadOf(moment.thread).open.size());
    const uint32_t depth = open == 0 ? 0 : open - 1;
    pyramid_.add(rows_.numberOf({moment.thread, depth, true}),
                 {.begin = bounded(moment.time),
                  .end = bounded(moment.time),
                  .record = recordNumber(),
                  .event = tables_.symbol(tables_.symbolOf(event_, moment.thread)).event,
                  .flags = static_cast<uint8_t>(flags | (failure_ ? kFailure : 0))});
}

// Finds the line of ticks and times that the record is on.
void Packer::anchor(const TraceRecord& record, Nanoseconds time) {
    constexpr uint64_t kFar = uint64_t{1} << 50;
    const uint64_t tick = record.timestamp;
    const uint64_t divisor = tracker_.clock().ticksPerMicrosecond();
    const bool isNear = tick - anchor_.tick + kFar < 2 * kFar && divisor < kFar / 1024;
    if (anchorResets_ == resets() && isNear &&
        saturated(Wide{anchor_.time} + nanosecondsOf(tick, anchor_.tick, divisor)) == time) {
        return;
    }
    anchorResets_ = resets();
    anchor_ = {.tick = tick, .time = time, .divisor = divisor};
    anchorIsNew_ = true;
}

// Tells the page of a line that is new to it; one that goes on, by a moment near the record.
void Packer::putSegment(const TraceRecord& record) {
    if (!block_.records.empty() && !anchorIsNew_) return;
    anchorIsNew_ = false;
    const auto divisor = static_cast<int64_t>(anchor_.divisor);
    const auto microseconds = static_cast<int64_t>(record.timestamp - anchor_.tick) / divisor;
    block_.segments.push_back({.index = static_cast<uint32_t>(block_.records.size()),
                               .tick = anchor_.tick + static_cast<uint64_t>(microseconds * divisor),
                               .time = saturated(Wide{anchor_.time} + Wide{microseconds} * 1000),
                               .divisor = anchor_.divisor});
}

void Packer::append(const TraceRecord& record, const Moment& moment) {
    const auto index = static_cast<uint32_t>(block_.records.size());
    if (index == 0) {
        block_.firstSlot = moment.slot;
        block_.least = block_.latest = moment.time;
    } else if (moment.slot != slotsSeen_) {
        block_.gaps.push_back({index, moment.slot - slotsSeen_});
    }
    slotsSeen_ = moment.slot + 1;
    putSegment(record);

    Thread& thread = threadOf(moment.thread);
    const uint32_t number = tables_.symbolOf(event_, moment.thread);
    Symbol& symbol = tables_.symbol(number);
    ++symbol.records;
    if (number >= placeInBlock_.size()) placeInBlock_.resize(number + 1);
    uint64_t& place = placeInBlock_[number];
    if (place >> 32 != blockNumber_ + 1) {
        const bool firstOfThread = thread.seenInBlock != blockNumber_;
        thread.seenInBlock = blockNumber_;
        const auto before = static_cast<uint32_t>(thread.open.size()) + closedNow_ - openedNow_;
        place = (blockNumber_ + 1) << 32 | block_.symbols.size();
        block_.symbols.push_back({number, moment.thread, firstOfThread ? before : 0, symbol.words});
    }
    const Qualifier qualifier = qualifierOf(record.debugid);
    const uint32_t usual = qualifier == Qualifier::end ? 1 : 0;
    if (closedNow_ != usual) block_.deeds.push_back({index, closedNow_, 0});
    if (failure_) block_.failures.push_back({index});
    overview_.addRecord(moment.time, failure_);
    numbers_.add(moment.slot, recordNumber());

    ThreadFacts& facts = thread.facts;
    if (facts.records++ == 0) facts.begin = moment.time;
    facts.end = moment.time;
    const uint32_t processor = std::min(record.cpuid, kMostProcessors - 1);
    if (processor >= facts.processors.size()) facts.processors.resize(processor + 1);
    ++facts.processors[processor];

    block_.least = std::min(block_.least, moment.time);
    block_.latest = std::max(block_.latest, moment.time);
    block_.records.push_back(record);
    block_.local.push_back(static_cast<uint32_t>(place));
    if (block_.records.size() == RecordBlock::kRecords) flush();
}

// Hands the block to a thread that packs it.
void Packer::flush() {
    if (block_.records.empty()) return;
    blockFacts_.push_back(block_.firstRecord);
    blockFacts_.push_back(block_.least);
    blockFacts_.push_back(block_.latest);
    const uint64_t next = recordNumber();
    packing_.push_back(std::async(std::launch::async, [block = std::move(block_)] {
        return asPageText(deflated(packed(block), Z_BEST_SPEED));
    }));
    block_ = RecordBlock();
    block_.firstRecord = next;
    block_.records.reserve(RecordBlock::kRecords);
    block_.local.reserve(RecordBlock::kRecords);
    ++blockNumber_;
    collect(std::max(1U, std::thread::hardware_concurrency()));
}

void Packer::collect(size_t most) {
    while (packing_.size() > most) {
        blocks_.push_back(packing_.front().get());
        packing_.pop_front();
    }
}

// I/O threads first, then the busiest.
Json Packer::lanes(const IoTrace& trace, std::vector<uint32_t>& laneOfThread) const {
    std::vector<uint8_t> isIo(threads_.size());
    for (const IoThread& io : trace.threads) {
        if (io.thread < isIo.size()) isIo[io.thread] = 1;
    }
    std::vector<std::map<std::string, uint64_t>> drivers(threads_.size());
    for (const Symbol& symbol : tables_.symbols()) {
        drivers[symbol.thread][tables_.driverOf(symbol.event)] += symbol.records;
    }
    std::vector<uint32_t> order;
    for (uint32_t thread = 0; thread < threads_.size(); ++thread) {
        if (threads_[thread].facts.records > 0) order.push_back(thread);
    }
    std::ranges::stable_sort(order, [&](uint32_t left, uint32_t right) {
        if (isIo[left] != isIo[right]) return isIo[left] > isIo[right];
        return threads_[left].facts.busy > threads_[right].facts.busy;
    });
    const auto driverOf = [&](uint32_t thread) {
        const auto byCount = [](const auto& entry) { return entry.second; };
        return std::ranges::max_element(drivers[thread], {}, byCount)->first;
    };
    laneOfThread.assign(threads_.size(), UINT32_MAX);
    Json lanes = Json::array();
    for (const uint32_t thread : order) {
        const ThreadFacts& facts = threads_[thread].facts;
        laneOfThread[thread] = static_cast<uint32_t>(lanes.size());
        lanes.push_back(
            {{"kind", isIo[thread] != 0 ? "io" : "thread"},
             {"thread", thread},
             {"id", wordText(tracker_.clock().threadId(thread))},
             {"name", "thread " + shortWordText(tracker_.clock().threadId(thread))},
             {"depth", std::min(facts.depth, kDeepest + 1)},
             {"records", facts.records},
             {"busy", facts.busy},
             {"processor", std::ranges::max_element(facts.processors) - facts.processors.begin()},
             {"driver", driverOf(thread)},
             {"begin", facts.begin},
             {"end", facts.end}});
    }
    return lanes;
}

Json Packer::dropouts(const IoAnswer& io, const std::vector<uint32_t>& laneOfThread) const {
    std::map<uint64_t, uint32_t> threadOfId;
    for (uint32_t thread = 0; thread < tracker_.clock().threads(); ++thread) {
        threadOfId[tracker_.clock().threadId(thread)] = thread;
    }
    Json list = Json::array();
    for (const Dropout& dropout : io.dropouts) {
        const uint64_t record = numbers_.of(dropout.slot);
        if (record == kNoRecord) continue;
        const Verdict& verdict = dropout.verdict;
        Json entry{{"record", record},
                   {"time", dropout.time},
                   {"lane", laneOfThread[threadOfId.at(dropout.thread)]},
                   {"lacking", dropout.lacking.value_or(0)},
                   {"cause", kDropoutCauses.at(static_cast<size_t>(verdict.cause))},
                   {"meaning", meaningOf(verdict)},
                   {"certainty", kCertainties.at(static_cast<size_t>(verdict.certainty))}};
        if (verdict.culprit) {
            const Culprit& culprit = *verdict.culprit;
            entry["culprit"] = culprit.code ? eventText(*culprit.code, tables_.names()) +
                                                  ", thread " + shortWordText(culprit.thread)
                                            : "slot " + countText(culprit.slot);
            const uint64_t number = numbers_.of(culprit.slot);
            if (number != kNoRecord) entry["culpritRecord"] = number;
        }
        Json& evidence = entry["evidence"] = Json::array();
        for (const uint64_t slot : verdict.evidence) {
            const uint64_t number = numbers_.of(slot);
            if (number != kNoRecord) evidence.push_back(number);
        }
        list.push_back(std::move(entry));
    }
    return list;
}

Json Packer::notes(const IoAnswer& io) const {
    Json notes = Json::array();
    if (!survey_->shown.empty()) {
        notes.push_back("A part of the trace: " + countText(recordNumber()) + " of its " +
                        countText(io.io.records) + " records.");
    }
    for (const std::string& limit : limitsOf(io.io, io.timed)) notes.push_back(limit);
    return notes;
}

std::string Packer::cycles(const IoTrace& trace) const {
    std::string heading;
    Columns columns;
    putNumber(heading, trace.threads.size());
    for (const IoThread& io : trace.threads) {
        std::vector<const IoCycle*> shown;
        for (const IoCycle& cycle : io.cycles) {
            if (numbers_.of(cycle.beginSlot) != kNoRecord) shown.push_back(&cycle);
        }
        putNumber(heading, io.thread);
        putNumber(heading, shown.size());
        const auto forEach = [&](const auto& put) {
            IoCycle before;
            uint64_t recordBefore = 0;
            for (const IoCycle* const cycle : shown) {
                put(*cycle, before, recordBefore);
                before = *cycle;
                recordBefore = numbers_.of(cycle->beginSlot);
            }
        };
        forEach([&](const IoCycle& cycle, const IoCycle& before, uint64_t) {
            columns.put(zigzag(cycle.begin - before.begin));
        });
        forEach([&](const IoCycle& cycle, const IoCycle&, uint64_t) {
            columns.put(zigzag(cycle.end - cycle.begin));
        });
        // 0 where it is not known.
        forEach([&](const IoCycle& cycle, const IoCycle&, uint64_t) {
            columns.put(cycle.due ? 1 + zigzag(*cycle.due - cycle.begin) : 0);
        });
        forEach([&](const IoCycle& cycle, const IoCycle& before, uint64_t) {
            columns.put(zigzag(cycle.budget - before.budget));
        });
        forEach([&](const IoCycle& cycle, const IoCycle&, uint64_t) {
            columns.put(cycle.overloaded ? 1 : 0);
        });
        forEach([&](const IoCycle& cycle, const IoCycle&, uint64_t before) {
            columns.put(numbers_.of(cycle.beginSlot) - before);
        });
    }
    std::string bytes;
    putNumber(bytes, heading.size());
    bytes += heading;
    columns.appendTo(bytes);
    return bytes;
}

PackedTrace Packer::finish(const std::string& title, const IoAnswer& io) {
    resetsBefore_ = resets();
    failure_ = false;
    tracker_.finish();
    flush();
    collect(0);
    pyramid_.finish();

    PackedTrace trace;
    trace.blocks = std::move(blocks_);
    std::set<size_t> processors;  // that have records
    for (const Thread& thread : threads_) {
        const std::vector<uint64_t>& records = thread.facts.processors;
        for (size_t i = 0; i < records.size(); ++i) {
            if (records[i] > 0) processors.insert(i);
        }
    }
    std::vector<uint32_t> laneOfThread;
    Json head{{"format", kFormat},
              {"title", title},
              {"records", recordNumber()},
              {"begin", survey_->begin},
              {"end", survey_->end}};
    head["notes"] = notes(io);
    tables_.describe(head);
    head["lanes"] = lanes(io.io, laneOfThread);
    head["dropouts"] = dropouts(io, laneOfThread);
    head["processors"] = processors;
    head["overview"] = overview_.toJson(processors.empty() ? 0 : *processors.rbegin() + 1);
    head["blocks"] = std::move(blockFacts_);
    Json& resolutions = head["levels"] = Json::array();
    for (size_t level = pyramid_.levels(); level-- > 0;) {
        resolutions.push_back(pyramid_.resolution(level));
        trace.levels.push_back(chunkOf(pyramid_.packed(level, rows_)));
    }
    trace.longBars = chunkOf(longBars_.packed(rows_));
    trace.cycles = chunkOf(cycles(io.io));
    trace.head = chunkOf(head.dump());
    return trace;
}

}  // namespace

PackedTrace pack(const TraceOptions& trace, const std::string& title, const Survey& survey) {
    const CodeNames names = readCodeNames(trace.names);
    Packer packer(survey, names);
    IoAnswer io;
    Input input(trace);
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        io.take(slots);
        for (const TraceRecord& slot : slots) packer.take(slot);
    }
    io.finish();
    return packer.finish(title, io);
}

}  // namespace sonaprobe::scope::timeline
