// The formats of rows, json and csv: records or calls as they come, or statistics at the end.

#pragma once

#include "analysis/call_statistics.h"
#include "scope/export/rows.h"

namespace sonaprobe::scope {

// `Row` writes the fields of one row: begin(cursor), the fields, end(), which gives the place after
// it.
template <class Row>
class TableFormat final : public Format {
  public:
    TableFormat(const FormatOptions& options, TextOutput& out)
        : what_(options.what),
          names_(options.names),
          out_(&out),
          words_(*options.names),
          statistics_(GroupBy::event) {}

    // Writes a row as `Head` makes it, which needs the names of the fields alone.
    template <class Head>
    void putHead() {
        const TraceRecord none{};
        const Call call{};
        const Closing closing{};
        ToldCall toldCall{};
        toldCall.call = &call;
        toldCall.closing = &closing;
        toldCall.start = &none;
        StatisticsRow statistics;
        statistics.numbers.resize(statisticsColumns().size());
        Head head;
        switch (what_) {
            case What::records:
                put(head, ToldRecord{.record = &none, .event = decode(none)});
                break;
            case What::calls: put(head, toldCall); break;
            case What::stats: put(head, statistics); break;
        }
    }

    void record(const ToldRecord& told) override {
        if (what_ == What::records) {
            put(row_, told);
        } else if (what_ == What::stats && isFailure(told.event)) {
            statistics_.countFailure(*told.record, told.thread);
        }
    }

    void point(const ToldRecord& told) override {
        if (what_ == What::stats) statistics_.countPoint(*told.record, told.thread);
    }

    void orphanEnd(const ToldRecord& told) override {
        if (what_ == What::stats) statistics_.countOrphanEnd(*told.record, told.thread);
    }

    uint32_t opened(const TraceRecord& record, const Call& call, bool selected, uint32_t) override {
        return what_ == What::stats ? statistics_.open(record, call, selected) : kNoNote;
    }

    void closed(const ToldCall& told) override {
        if (what_ == What::calls && told.selected) put(row_, told);
        if (what_ != What::stats) return;
        Call call = *told.call;
        call.tag = told.note;
        statistics_.close(call, *told.closing, told.endSelected);
    }

    void finish(const TraceClock& clock) override {
        if (what_ != What::stats) return;
        StatisticsTable table(statistics_, GroupBy::event, clock, *names_);
        table.sortBy(0);
        for (const StatisticsRow& row : table.rows()) put(row_, row);
    }

  private:
    template <class AnyRow, class Told>
    void put(AnyRow& row, const Told& told) {
        row.begin(out_->cursor());
        putFields(row, told, words_);
        out_->moveTo(row.end());
    }

    What what_;
    const CodeNames* names_;
    TextOutput* out_;
    EventWords words_;
    CallStatistics statistics_;
    Row row_;
};

}  // namespace sonaprobe::scope
