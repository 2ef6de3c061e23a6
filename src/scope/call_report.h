// Single calls and the spread of their times, for people and as JSON.

#pragma once

#include <vector>

#include "analysis/histogram.h"
#include "analysis/longest_calls.h"
#include "scope/event_text.h"
#include "scope/output.h"

namespace sonaprobe::scope {

class CallReport {
  public:
    // Both must outlive this. The clock knows the threads by their numbers.
    CallReport(const TraceClock& clock, const CodeNames& codeNames)
        : clock_(&clock), codeNames_(&codeNames) {}

    void print(Output& out, const Histogram& histogram) const;
    Json toJson(const Histogram& histogram) const;

    // Each with the lines of its start and its end.
    void print(Output& out, const std::vector<LongCall>& calls) const;
    Json toJson(const std::vector<LongCall>& calls) const;

  private:
    std::string textOf(const TraceRecord& record) const;

    const TraceClock* clock_;
    const CodeNames* codeNames_;
};

}  // namespace sonaprobe::scope
