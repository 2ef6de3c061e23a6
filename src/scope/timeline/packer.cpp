// Packs a trace, one record after the other.

#include "scope/timeline/packer.h"

#include <algorithm>
#include <set>

#include "analysis/event_traits.h"
#include "scope/event_text.h"
#include "scope/records.h"
#include "scope/timeline/bars.h"
#include "scope/timeline/block_packing.h"
#include "scope/timeline/columns.h"
#include "scope/timeline/cycles.h"
#include "scope/timeline/event_tables.h"
#include "scope/timeline/overview.h"
#include "scope/timeline/page_head.h"

namespace sonaprobe::scope::timeline {

namespace {

constexpr int kFormat = 1;
constexpr uint64_t kNoBlock = UINT64_MAX;

// The finest level has so many cells for each block's time, so that a screen of finer resolution
// shows some ten blocks. The coarsest has a cell for each pixel of the narrowest screen.
constexpr Nanoseconds kCellsOfBlock = 128;
constexpr Nanoseconds kNarrowestScreen = 400;

std::string chunkOf(const std::string& bytes) { return asPageText(deflated(bytes)); }

class Packer {
  public:
    Packer(const Survey& survey, const Thinning& thinning, const CodeNames& names)
        : survey_(&survey),
          thinning_(&thinning),
          tables_(names),
          pyramid_(finestOf(survey, thinning), span(survey) / kNarrowestScreen),
          overview_(survey.begin, survey.end) {}

    void take(const TraceRecord& slot);
    PackedTrace finish(const std::string& title, IoObserving& io);

  private:
    friend CallTrackerOf<Packer>;

    // An open call that is shown.
    struct Frame {
        LongBar call{};
        uint64_t block = 0;
        uint32_t row = 0;
        uint32_t depth = 0;
        bool shown = false;
        bool merged = false;
    };
    struct Thread {
        std::vector<uint32_t> open;  // frames
        uint64_t seenInBlock = kNoBlock;
        ThreadFacts facts;
    };

    static Nanoseconds span(const Survey& survey) {
        return saturatedDifference(survey.end, survey.begin);
    }
    static Nanoseconds finestOf(const Survey& survey, const Thinning& thinning) {
        const uint64_t records = thinning.merged == 0 ? survey.records : thinning.kept;
        const auto blocks = static_cast<Nanoseconds>(records / RecordBlock::kRecords + 1);
        const Nanoseconds finest =
            std::min(span(survey) / blocks / kCellsOfBlock, span(survey) / kNarrowestScreen);
        if (thinning.merged == 0) return finest;
        // What was merged lies in the same cell as what it was merged with.
        return std::max(finest / thinning.stretch, Nanoseconds{1}) * thinning.stretch;
    }

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent);
    void closed(const Call& call, const Call* parent, const Closing& closing);
    void point(const TraceRecord& record, const Moment& moment);
    void orphanEnd(const TraceRecord& record, const Moment& moment);

    Thread& threadOf(uint32_t number) {
        if (number >= threads_.size()) threads_.resize(number + 1);
        return threads_[number];
    }
    uint32_t symbolOn(uint32_t thread);
    void putPoint(const Moment& moment, uint8_t flags);
    void append(const TraceRecord& record, const Moment& moment);
    void anchor(const TraceRecord& record, Nanoseconds time);
    void putSegment(const TraceRecord& record);
    uint32_t placeOf(uint32_t thread);
    uint64_t resets() const {
        return tracker_.clock().stepsBack() + tracker_.clock().divisorChanges();
    }
    uint64_t recordNumber() const { return block_->firstRecord + block_->records; }
    // Of a bar whose own record is merged, one that the page has.
    uint64_t recordOfBar() const {
        return recordNumber() - (merged_ && recordNumber() > 0 ? 1 : 0);
    }
    bool isInMerged(const Thread& thread) const {
        return !thread.open.empty() && frames_[thread.open.back()].merged;
    }
    void flush();

    const Survey* survey_;
    const Thinning* thinning_;
    CallTrackerOf<Packer> tracker_{*this};
    EventTables tables_;
    SlotNumbers numbers_;  // of the records
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
    bool merged_ = false;
    uint32_t symbolAfter_ = 0;  // 0: not asked for yet
    uint32_t closedNow_ = 0;
    uint32_t openedNow_ = 0;
    uint64_t resetsBefore_ = 0;
    bool resetNow_ = false;

    BlockPacking packing_;
    std::unique_ptr<RecordBlock> block_ = packing_.fresh();
    uint64_t blockNumber_ = 0;
    uint64_t slotsSeen_ = 0;
    std::vector<uint64_t> placeInBlock_;  // by symbol: block and place after
    Segment anchor_;                      // of the line of ticks and times in force
    uint64_t anchorResets_ = UINT64_MAX;
    bool anchorIsClocks_ = false;  // where the trace's clock began its own line
    bool anchorIsNew_ = false;
    Json blockFacts_ = Json::array();
};

// The symbol of the record being taken.
uint32_t Packer::symbolOn(uint32_t thread) {
    if (symbolAfter_ == 0) symbolAfter_ = tables_.symbolOf(event_, thread) + 1;
    return symbolAfter_ - 1;
}

void Packer::take(const TraceRecord& slot) {
    const uint64_t number = tracker_.slots();
    closedNow_ = openedNow_ = symbolAfter_ = 0;
    resetsBefore_ = resets();
    resetNow_ = false;
    if (kindOf(slot) == SlotKind::record) {
        event_ = decode(slot);
        failure_ = isFailure(event_);
        shown_ = survey_->shows(number);
        merged_ = thinning_->merges(number);
    }
    const Moment* const moment = tracker_.take(slot);
    if (moment == nullptr) return;
    anchor(slot, moment->time);
    if (!shown_) return;
    const Moment shown{bounded(moment->time), moment->slot, moment->thread};
    overview_.addRecord(shown.time, failure_, merged_);
    threadOf(shown.thread).facts.add(shown.time, slot.cpuid);
    if (!merged_) append(slot, shown);
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
    frame.shown = shown_;
    if (!shown_) return place;
    Thread& thread = threadOf(call.thread);
    frame.merged = merged_;
    frame.depth = static_cast<uint32_t>(thread.open.size());
    frame.row = rows_.numberOf({call.thread, frame.depth, false});
    frame.block = blockNumber_;
    if (!merged_) ++openedNow_;
    const unsigned flags = (call.code == kIoThread ? kWaiting : 0) | (failure_ ? kFailure : 0) |
                           (merged_ ? kMerged | kThinned : 0);
    frame.call = {.bar = {.begin = bounded(call.start),
                          .record = recordOfBar(),
                          .event = tables_.symbol(symbolOn(call.thread)).event,
                          .flags = static_cast<uint8_t>(flags)}};
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
    if (!reset && !frame.merged) ++closedNow_;
    if (reset && !std::exchange(resetNow_, true)) {
        block_->deeds.push_back({static_cast<uint32_t>(block_->records), Deed::kAll, closing.time});
    }

    Bar& bar = frame.call.bar;
    bar.end = bounded(closing.time);
    if (closing.how == CallEnd::cutOff) bar.flags |= kCutOff;
    if (closing.how == CallEnd::unfinished) bar.flags |= kUnfinished;
    if (closing.how == CallEnd::finished && failure_) bar.flags |= kFailure;
    const Nanoseconds length = bar.end - bar.begin;
    frame.call.self = saturatedDifference(length, frame.call.self);
    Frame* const parent = thread.open.empty() ? nullptr : &frames_[thread.open.back()];
    if (parent != nullptr) addTo(parent->call.self, length);

    const bool waits = (bar.flags & kWaiting) != 0;
    const bool inWaiting = parent != nullptr && (parent->call.bar.flags & kWaiting) != 0;
    if (!waits && (frame.depth == 0 || (frame.depth == 1 && inWaiting))) {
        Nanoseconds& busy = thread.facts.busy;
        addTo(busy, length);
        overview_.addBusy(bar.begin, bar.end);
    }
    if (!isInMerged(thread)) pyramid_.add(frame.row, bar);
    if (frame.merged) return;
    if (frame.block != blockNumber_ || closing.how == CallEnd::unfinished) {
        frame.call.endRecord = recordNumber();
        longBars_.add(frame.row, frame.call);
    }
}

void Packer::point(const TraceRecord&, const Moment& moment) { putPoint(moment, 0); }
void Packer::orphanEnd(const TraceRecord&, const Moment& moment) { putPoint(moment, kCutOff); }

void Packer::putPoint(const Moment& moment, uint8_t flags) {
    if (!shown_) return;
    const Thread& thread = threadOf(moment.thread);
    if (isInMerged(thread)) return;
    const auto open = static_cast<uint32_t>(thread.open.size());
    const uint32_t depth = open == 0 ? 0 : open - 1;
    const unsigned more = (failure_ ? kFailure : 0) | (merged_ ? kMerged | kThinned : 0);
    pyramid_.add(rows_.numberOf({moment.thread, depth, true}),
                 {.begin = bounded(moment.time),
                  .end = bounded(moment.time),
                  .record = recordOfBar(),
                  .event = tables_.symbol(symbolOn(moment.thread)).event,
                  .flags = static_cast<uint8_t>(flags | more)});
}

// Finds the line of ticks and times that the record is on.
void Packer::anchor(const TraceRecord& record, Nanoseconds time) {
    constexpr uint64_t kFar = uint64_t{1} << 50;
    const uint64_t tick = record.timestamp;
    const TickRate& rate = tracker_.clock().rate();
    const uint64_t divisor = rate.ticksPerMicrosecond();
    const bool isNear =
        tick - anchor_.tick + kFar < 2 * kFar && divisor < kFar / 1024 && time == bounded(time);
    const bool goesOn = anchorResets_ == resets();
    if (goesOn && isNear &&
        (anchorIsClocks_ || saturatedSum(anchor_.time, rate.between(anchor_.tick, tick)) == time)) {
        return;
    }
    anchorIsClocks_ = !goesOn;
    anchorResets_ = resets();
    anchor_ = {.tick = tick, .time = time, .divisor = divisor};
    anchorIsNew_ = true;
}

// Tells the page of a line that is new to it; one that goes on, by a moment near the record.
void Packer::putSegment(const TraceRecord& record) {
    if (block_->records != 0 && !anchorIsNew_) return;
    anchorIsNew_ = false;
    const auto divisor = static_cast<int64_t>(anchor_.divisor);
    const auto microseconds = static_cast<int64_t>(record.timestamp - anchor_.tick) / divisor;
    block_->segments.push_back(
        {.index = static_cast<uint32_t>(block_->records),
         .tick = anchor_.tick + static_cast<uint64_t>(microseconds * divisor),
         .time = saturated(Wide{anchor_.time} + Wide{microseconds} * 1000),
         .divisor = anchor_.divisor});
}

// The place of its symbol in the block.
uint32_t Packer::placeOf(uint32_t threadNumber) {
    const uint32_t number = symbolOn(threadNumber);
    Symbol& symbol = tables_.symbol(number);
    ++symbol.records;
    if (number >= placeInBlock_.size()) placeInBlock_.resize(number + 1);
    uint64_t& place = placeInBlock_[number];
    if (place >> 32 != blockNumber_ + 1) {
        Thread& thread = threadOf(threadNumber);
        const bool firstOfThread = thread.seenInBlock != blockNumber_;
        thread.seenInBlock = blockNumber_;
        const auto before = static_cast<uint32_t>(thread.open.size()) + closedNow_ - openedNow_;
        place = (blockNumber_ + 1) << 32 | block_->symbols.size();
        block_->symbols.push_back({number, threadNumber, firstOfThread ? before : 0, symbol.words});
    }
    return static_cast<uint32_t>(place);
}

void Packer::append(const TraceRecord& record, const Moment& moment) {
    const auto index = static_cast<uint32_t>(block_->records);
    if (index == 0) {
        block_->firstSlot = moment.slot;
        block_->least = block_->latest = moment.time;
    } else if (moment.slot != slotsSeen_) {
        block_->gaps.push_back({index, moment.slot - slotsSeen_});
    }
    slotsSeen_ = moment.slot + 1;
    numbers_.add(moment.slot);
    putSegment(record);
    const uint32_t place = placeOf(moment.thread);
    const uint32_t usual = qualifierOf(record.debugid) == Qualifier::end ? 1 : 0;
    if (closedNow_ != usual) block_->deeds.push_back({index, closedNow_, 0});
    if (failure_) block_->failures.push_back({index});
    block_->least = std::min(block_->least, moment.time);
    block_->latest = std::max(block_->latest, moment.time);
    block_->add(record, place);
    if (block_->records == RecordBlock::kRecords) flush();
}

// Hands the block on to be packed.
void Packer::flush() {
    if (block_->records == 0) return;
    blockFacts_.push_back(block_->firstRecord);
    blockFacts_.push_back(block_->least);
    blockFacts_.push_back(block_->latest);
    const uint64_t next = recordNumber();
    packing_.take(std::move(block_));
    block_ = packing_.fresh();
    block_->firstRecord = next;
    ++blockNumber_;
}

PackedTrace Packer::finish(const std::string& title, IoObserving& io) {
    resetsBefore_ = resets();
    failure_ = false;
    tracker_.finish();
    flush();
    pyramid_.finish();

    PackedTrace trace;
    Worker beside(1);  // the cycles are the largest chunk
    beside.give([&] { trace.cycles = chunkOf(packedCycles(io.answer().io, *survey_, numbers_)); });
    Json resolutions = Json::array();
    for (size_t level = pyramid_.levels(); level-- > 0;) {
        resolutions.push_back(pyramid_.resolution(level));
        trace.levels.push_back(chunkOf(pyramid_.packed(level, rows_)));
    }
    trace.longBars = chunkOf(longBars_.packed(rows_));

    const IoAnswer& answer = io.answer();
    std::vector<ThreadFacts> facts;  // by thread
    std::set<size_t> processors;     // that have records
    for (Thread& thread : threads_) {
        thread.facts.id = tracker_.clock().threadId(static_cast<uint32_t>(facts.size()));
        for (size_t i = 0; i < thread.facts.processors.size(); ++i) {
            if (thread.facts.processors[i] > 0) processors.insert(i);
        }
        facts.push_back(std::move(thread.facts));
    }
    Json head{{"format", kFormat},
              {"title", title},
              {"records", recordNumber()},
              {"begin", survey_->begin},
              {"end", survey_->end}};
    head["notes"] =
        notesOf(answer, recordNumber(), !survey_->shown.empty(), *thinning_, title, overview_);
    tables_.describe(head);
    head["lanes"] = lanesOf(facts, answer.io, tables_);
    head["dropouts"] = dropoutsOf(answer, facts, head["lanes"], numbers_, tables_.names());
    head["processors"] = processors;
    head["overview"] = overview_.toJson(processors.empty() ? 0 : *processors.rbegin() + 1);
    head["blocks"] = std::move(blockFacts_);
    head["levels"] = std::move(resolutions);
    trace.head = chunkOf(head.dump());
    beside.finish();
    trace.blocks = packing_.finish();
    return trace;
}

}  // namespace

PackedTrace pack(const TraceOptions& trace, const std::string& title, const Survey& survey,
                 const Thinning& thinning, IoObserving& io) {
    const CodeNames names = readCodeNames(trace.names);
    Packer packer(survey, thinning, names);
    Input input(trace);
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) packer.take(slot);
    }
    return packer.finish(title, io);
}

}  // namespace sonaprobe::scope::timeline
