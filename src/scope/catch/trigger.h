// What a watch waits for, asked of record after record.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/call_tracker.h"
#include "analysis/selection.h"

namespace sonaprobe::scope {

class Trigger {
  public:
    // Any of these: "dropout", "failure", "longer 5ms", an event as --method names it, a condition
    // as --where takes it. Throws a Failure that says what a text could have been.
    explicit Trigger(const std::vector<std::string>& conditions);
    Trigger(const Trigger&) = delete;
    Trigger& operator=(const Trigger&) = delete;

    // The first of the conditions that the next record meets.
    std::optional<std::string_view> take(const TraceRecord& record);

    // The clock of the records to come; calls that are open now are not timed. For the beginning,
    // and where records are lost.
    void beginAnew(uint64_t ticksPerMicrosecond);

  private:
    // The longest call that the record being taken has ended.
    class LongestEnded final : public CallSink {
      public:
        uint32_t opened(const TraceRecord&, const Call&, const Call*) override { return 0; }
        void closed(const Call& call, const Call* parent, const Closing& closing) override;
        void point(const TraceRecord&, const Moment&) override {}
        void orphanEnd(const TraceRecord&, const Moment&) override {}

        Nanoseconds length = 0;
    };

    struct Condition {
        std::string text;
        bool dropout = false;
        std::optional<Nanoseconds> longer{};
        Selection selection{};  // of others
    };

    static Condition conditionOf(const std::string& text);

    std::vector<Condition> conditions_;
    uint64_t ticksPerMicrosecond_ = 0;
    LongestEnded ended_;
    std::optional<CallTracker> calls_;  // where a condition asks for long calls
};

}  // namespace sonaprobe::scope
