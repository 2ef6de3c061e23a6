// Fills a database with records, calls, values and events.

#include "scope/export/sqlite.h"

#include <tsl/robin_set.h>

#include "events/number_text.h"
#include "scope/export/rows.h"
#include "scope/export/sqlite_database.h"
#include "scope/export/sqlite_findings.h"
#include "scope/export/sqlite_schema.h"
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
        records_.emplace(database_, "INSERT INTO records VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
        values_.emplace(database_, R"(INSERT INTO "values" VALUES (?, ?, ?))");
        calls_.emplace(database_,
                       "INSERT INTO calls VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        events_.emplace(database_, "INSERT INTO events VALUES (?, ?, ?, ?)");
    }

    void record(const ToldRecord& told) override {
        const TraceRecord& record = *told.record;
        const auto slot = static_cast<int64_t>(told.slot);
        const WordRoom thread(record.arg5);
        const WordRoom object(record.arg1);
        takeEvent(codeOf(record.debugid));
        records_->add(slot).add(told.time).add(codeOf(record.debugid)).add(qualifierText(record));
        records_->add(thread.text()).add(record.cpuid);
        addObject(*records_, record, object);
        records_->add(isFailure(told.event) ? 1 : 0);
        if (told.event.text == nullptr) {
            records_->addNull();
        } else {
            records_->add(words_.textOf(told.event, told.ticksPerMicrosecond));
        }
        records_->put();
        putValues(told, slot);
    }

    void closed(const ToldCall& told) override {
        if (!told.selected) return;
        const Call& call = *told.call;
        const WordRoom thread(told.start->arg5);
        const WordRoom object(call.object);
        takeEvent(call.code);
        calls_->add(static_cast<int64_t>(call.startSlot));
        if (told.closing->how == CallEnd::unfinished) {
            calls_->addNull();
        } else {
            calls_->add(static_cast<int64_t>(told.closing->slot));
        }
        calls_->add(told.startTime).add(told.closing->lengthOf(call));
        calls_->add(told.closing->selfOf(call)).add(call.depth);
        if (told.parent == nullptr) {
            calls_->addNull();
        } else {
            calls_->add(static_cast<int64_t>(told.parent->startSlot));
        }
        calls_->add(call.code).add(endedText(told.closing->how)).add(thread.text()).add(call.cpu);
        addObject(*calls_, *told.start, object);
        calls_->add(tellsFailure(told) ? 1 : 0).put();
    }

    void finish(const TraceClock&) override {
        database_.run(kSqliteIndexes);
        database_.run(kSqliteViews);
        records_.reset();
        values_.reset();
        calls_.reset();
        events_.reset();
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

    void putValues(const ToldRecord& told, int64_t slot) {
        for (const Piece& piece : piecesOf(told.event)) {
            if (piece.reading == Reading::nothing) continue;
            const Value value = valueOf(told.event, piece);
            const WordRoom word(value.word);
            values_->add(slot).add(value.name);
            switch (formOf(value)) {
                case ValueForm::number: values_->add(static_cast<int64_t>(value.word)); break;
                case ValueForm::word: values_->add(word.text()); break;
                case ValueForm::decimalText:
                case ValueForm::text:
                    values_->add(words_.textOf(told.event, piece, told.ticksPerMicrosecond));
                    break;
            }
            values_->put();
        }
    }

    EventWords words_;
    Database database_;
    std::optional<Insert> records_;
    std::optional<Insert> values_;
    std::optional<Insert> calls_;
    std::optional<Insert> events_;
    tsl::robin_set<uint32_t> known_;  // codes of events
};

}  // namespace

std::unique_ptr<Format> makeSqlite(const FormatOptions& options, const TraceOptions& trace,
                                   const std::string& path, const std::string& name) {
    return std::make_unique<Sqlite>(options, trace, path, name);
}

}  // namespace sonaprobe::scope
