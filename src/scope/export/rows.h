// The rows of json and csv: which fields a record, a call and an event's statistics have, each said
// once. A writer of rows has a function for each kind of field.

#pragma once

#include "analysis/event_traits.h"
#include "scope/export/event_words.h"
#include "scope/export/format.h"
#include "scope/statistics_table.h"

namespace sonaprobe::scope {

inline std::string_view qualifierText(const TraceRecord& record) {
    constexpr std::string_view kNames[] = {"none", "start", "end", "both"};
    return kNames[static_cast<size_t>(qualifierOf(record.debugid))];
}

inline std::string_view endedText(CallEnd how) {
    constexpr std::string_view kNames[] = {"finished", "cut off", "unfinished"};
    return kNames[static_cast<size_t>(how)];
}

// Whether the record that starts the call or the one that ends it tells of a failure.
inline bool tellsFailure(const ToldCall& told) {
    return isFailure(*told.start) ||
           (told.closing->end != nullptr && isFailure(*told.closing->end));
}

template <class Row>
void putNames(Row& row, const EventNames& names, uint32_t code) {
    row.text("driver", names.driver);
    row.text("method", names.method);
    row.code("code", codeOf(code));
}

template <class Row>
void putObject(Row& row, const TraceRecord& record) {
    if (hasObject(record.debugid)) {
        row.word("object", record.arg1);
    } else {
        row.text("object", {});
    }
}

template <class Row>
void putFields(Row& row, const ToldRecord& told, EventWords& words) {
    const TraceRecord& record = *told.record;
    row.integer("slot", static_cast<int64_t>(told.slot));
    row.integer("time_ns", told.time);
    putNames(row, words.namesOf(told.event), record.debugid);
    row.text("qualifier", qualifierText(record));
    row.word("thread", record.arg5);
    row.integer("cpu", record.cpuid);
    putObject(row, record);
    row.flag("failure", isFailure(told.event));
    row.text("text", told.event, words, told.ticksPerMicrosecond);
    row.values("values", told.event, words, told.ticksPerMicrosecond);
}

template <class Row>
void putFields(Row& row, const ToldCall& told, EventWords& words) {
    const Call& call = *told.call;
    const TraceRecord* const end = told.closing->end;
    row.integer("slot", static_cast<int64_t>(call.startSlot));
    row.integer("end_slot", static_cast<int64_t>(told.closing->slot));
    row.integer("time_ns", told.startTime);
    row.integer("duration_ns", told.closing->lengthOf(call));
    row.integer("self_ns", told.closing->selfOf(call));
    row.integer("depth", call.depth);
    putNames(row, words.namesOf(call.code), call.code);
    row.text("ended", endedText(told.closing->how));
    row.word("thread", told.start->arg5);
    row.integer("cpu", call.cpu);
    putObject(row, *told.start);
    row.flag("failure", tellsFailure(told));
    row.text("text", decode(*told.start), words, told.ticksPerMicrosecond);
    row.text("end_text", end == nullptr ? Event{} : decode(*end), words, told.ticksPerMicrosecond);
}

template <class Row>
void putFields(Row& row, const StatisticsRow& told, EventWords& words) {
    putNames(row, words.namesOf(told.key.code), told.key.code);
    row.integer("finished", static_cast<int64_t>(told.finished));
    for (size_t i = 0; i < told.numbers.size(); ++i) {
        // Shares are the reader's to make, of the rows that it takes.
        const StatisticsColumn& column = statisticsColumns()[i];
        if (column.measure != Measure::share) row.optional(fieldNameOf(column), told.numbers[i]);
    }
}

}  // namespace sonaprobe::scope
