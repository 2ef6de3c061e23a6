// Fills a database with records, calls, values and events.

#include "scope/export/sqlite.h"

#include <tsl/robin_set.h>

#include "events/number_text.h"
#include "scope/export/rows.h"
#include "scope/export/sqlite_database.h"
#include "scope/export/sqlite_findings.h"
#include "scope/export/sqlite_schema.h"
#include "scope/export/values_json.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

// A 64-bit word as text: "0x00000000000000a5".
class WordRoom {
  public:
    explicit WordRoom(uint64_t word) { putHexDigits(putText(room_, "0x"), word, 16); }
    std::string_view text() const { return {room_, 18}; }

  private:
    char room_[18 + kDigitSlack]{};
};

class Sqlite final : public Format {
  public:
    Sqlite(const FormatOptions& options, const TraceOptions& trace, const std::string& path,
           const std::string& name)
        : words_(*options.names), database_(path, name) {
        database_.run(kSqliteTables);
        putFindings(database_, trace);
        records_.emplace(database_, "records", 10);
        calls_.emplace(database_, "calls", 13);
        events_.emplace(database_, "events", 4);
    }

    void record(const ToldRecord& told) override {
        const TraceRecord& record = *told.record;
        const WordRoom thread(record.arg5);
        const WordRoom object(record.arg1);
        takeEvent(codeOf(record.debugid));
        records_->add(static_cast<int64_t>(told.slot))
            .add(told.time)
            .add(codeOf(record.debugid))
            .add(qualifierText(record));
        records_->add(thread.text()).add(record.cpuid);
        addObject(*records_, record, object);
        records_->add(isFailure(told.event) ? 1 : 0);
        if (told.event.text == nullptr) {
            records_->addNull().addNull().put();
            return;
        }
        const uint64_t ticks = told.ticksPerMicrosecond;
        records_->add(words_.textOf(told.event, ticks));
        const char* const end = putJsonValues(values_.data(), told.event, words_, ticks);
        records_->add(std::string_view(values_.data(), end)).put();
    }

    void closed(const ToldCall& told) override {
        if (!told.selected) return;
        const Call& call = *told.call;
        const WordRoom thread(told.start->arg5);
        const WordRoom object(call.object);
        takeEvent(call.code);
        calls_->add(static_cast<int64_t>(call.startSlot));
        const bool ended = told.closing->how != CallEnd::unfinished;
        calls_->add(ended ? std::optional<int64_t>(told.closing->slot) : std::nullopt);
        calls_->add(told.startTime).add(told.closing->lengthOf(call));
        calls_->add(told.closing->selfOf(call)).add(call.depth);
        const bool outermost = told.parent == nullptr;
        calls_->add(outermost ? std::nullopt : std::optional<int64_t>(told.parent->startSlot));
        calls_->add(call.code).add(endedText(told.closing->how)).add(thread.text()).add(call.cpu);
        addObject(*calls_, *told.start, object);
        calls_->add(tellsFailure(told) ? 1 : 0).put();
    }

    void finish(const TraceClock&) override {
        for (std::optional<Insert>* insert : {&records_, &calls_, &events_}) {
            (*insert)->finish();
            insert->reset();
        }
        database_.run(kSqliteViews);
        database_.finish();
    }

  private:
    static void addObject(Insert& insert, const TraceRecord& record, const WordRoom& object) {
        if (hasObject(record.debugid)) {
            insert.add(object.text());
        } else {
            insert.addNull();
        }
    }

    void takeEvent(uint32_t code) {
        if (!known_.insert(code).second) return;
        const std::string hex = codeText(code);
        const EventNames names = words_.namesOf(code);
        events_->add(code).add(hex).add(names.driver).add(names.method).put();
    }

    EventWords words_;
    Database database_;
    std::optional<Insert> records_;
    std::optional<Insert> calls_;
    std::optional<Insert> events_;
    tsl::robin_set<uint32_t> known_;  // codes of events
    std::array<char, TextOutput::kRoom / 2> values_{};
};

}  // namespace

std::unique_ptr<Format> makeSqlite(const FormatOptions& options, const TraceOptions& trace,
                                   const std::string& path, const std::string& name) {
    return std::make_unique<Sqlite>(options, trace, path, name);
}

}  // namespace sonaprobe::scope
