// Random records in which what matters is frequent: known codes, selectors, edge values.

#pragma once

#include <string>
#include <vector>

#include "events/decoder.h"
#include "random.h"
#include "record/trace_record.h"

namespace sonaprobe::differential {

class RecordMaker {
  public:
    explicit RecordMaker(Random& random);
    TraceRecord make();

  private:
    uint32_t debugid();
    uint64_t word();
    void meetConditionOf(TraceRecord& record);

    Random& random_;
    std::vector<const Row*> texts_;
    std::vector<uint32_t> codes_;  // of the texts
    uint64_t now_ = 0;
};

// The record as a line, as the golden files have it.
std::string textOf(const TraceRecord& record);

}  // namespace sonaprobe::differential
