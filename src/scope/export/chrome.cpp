// The JSON that tracing viewers of browsers read: a complete event for each call, an instant for
// each point, sorted by time.

#include <limits>

#include "scope/export/put_json.h"
#include "scope/export/rows.h"
#include "scope/export/sorted_text.h"
#include "scope/export/values_json.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

// A name of the viewers' own colours.
constexpr std::string_view kFailureColor = R"(,"cname":"terrible")";

// Small and dense, from 1 on: some viewers give each number up to the largest its place.
constexpr uint32_t idOf(uint32_t thread) { return thread + 1; }

class Chrome final : public Format {
  public:
    Chrome(const FormatOptions& options, TextOutput& out) : out_(&out), words_(*options.names) {}

    void again(const TraceClock& clock) override {
        putTraceHead(clock);
        isAhead_ = false;
    }

    uint32_t opened(const TraceRecord&, const Call& call, bool, uint32_t) override {
        if (!isAhead_ && call.startSlot - periodBegin_ >= kFar) {
            // What began before the period and is still open is far: its event is there.
            if (events_.hasDoubled()) events_.forEachBefore({periodEarliest_, 0}, putEvent());
            periodBegin_ = call.startSlot;
            periodEarliest_ = saturatedDifference(call.start, TraceClock::kMostDisorder);
        }
        return kNoNote;
    }

    void point(const ToldRecord& told) override {
        if (isAhead_) return;
        const bool dropout = codeOf(told.record->debugid) == kOverload;
        char* at = putText(events_.cursor(), ",\n{\"ph\":\"i\",\"s\":");
        at = putText(at, dropout ? R"("g")" : R"("t")");
        at = putHead(at, told.thread, told.placed, words_.namesOf(told.event));
        if (dropout || isFailure(told.event)) at = putText(at, kFailureColor);
        at = putText(at, R"(,"args":{"slot":)");
        at = putUnsigned(at, told.slot);
        at = putUnsigned(putText(at, R"(,"cpu":)"), told.record->cpuid);
        at = putWords(at, R"(,"text":)", R"(,"values":)", told.event, told.ticksPerMicrosecond);
        events_.add({told.placed, told.order}, putText(at, "}}"));
    }

    void closed(const ToldCall& told) override {
        const Call& call = *told.call;
        if (!told.selected || isAhead_ != (told.closing->slot - call.startSlot >= kFar)) return;
        const uint64_t ticks = told.ticksPerMicrosecond;
        char* at = putText(events_.cursor(), ",\n{\"ph\":\"X\"");
        at = putHead(at, call.thread, told.placedStart, words_.namesOf(call.code));
        at = putText(at, R"(,"dur":)");
        at = putMicroseconds(at, saturatedDifference(told.placedEnd, told.placedStart));
        if (tellsFailure(told)) at = putText(at, kFailureColor);
        at = putText(at, R"(,"args":{"slot":)");
        at = putUnsigned(at, call.startSlot);
        at = putUnsigned(putText(at, R"(,"cpu":)"), call.cpu);
        if (hasObject(call.code)) at = putJsonWord(putText(at, R"(,"object":)"), call.object);
        at = putJsonText(putText(at, R"(,"ended":)"), endedText(told.closing->how));
        at = putWords(at, R"(,"start":)", R"(,"start_values":)", decode(*told.start), ticks);
        if (const TraceRecord* const end = told.closing->end; end != nullptr) {
            at = putWords(at, R"(,"end":)", R"(,"end_values":)", decode(*end), ticks);
        }
        events_.add({told.placedStart, told.startOrder}, putText(at, "}}"));
    }

    void finish(const TraceClock&) override {
        events_.forEach(putEvent());
        out_->put("\n]}\n");
    }

  private:
    // Calls over so many slots are told of by a first reading, so that no event waits longer for
    // those before it.
    static constexpr uint64_t kFar = 4096;

    SortedText::Visit putEvent() {
        return [this](const TextKey&, std::string_view event) { out_->put(event); };
    }

    void putTraceHead(const TraceClock& clock) {
        out_->put("{\"displayTimeUnit\":\"ns\",\"traceEvents\":[\n");
        out_->put(R"({"ph":"M","pid":1,"tid":0,"ts":0,"name":"process_name",)"
                  R"("args":{"name":"drivers"}})");
        for (uint32_t thread = 0; thread < clock.threads(); ++thread) {
            char* at = putText(out_->cursor(), ",\n{\"ph\":\"M\",\"pid\":1,\"tid\":");
            at = putUnsigned(at, idOf(thread));
            at = putText(at, R"(,"ts":0,"name":"thread_name","args":{"name":"thread )");
            at = putText(at, shortWordText(clock.threadId(thread)));
            out_->moveTo(putText(at, "\"}}"));
        }
    }

    static char* putHead(char* at, uint32_t thread, Nanoseconds time, const EventNames& names) {
        at = putUnsigned(putText(at, R"(,"pid":1,"tid":)"), idOf(thread));
        at = putMicroseconds(putText(at, R"(,"ts":)"), time);
        at = putText(at, R"(,"name":)");
        if (names.driver.empty()) {
            at = putJsonText(at, names.method);
        } else {  // identifiers
            *at++ = '"';
            at = putText(putText(putText(at, names.driver), kNameSeparator), names.method);
            *at++ = '"';
        }
        at = putText(at, R"(,"cat":")");
        at = putText(at, names.driver.empty() ? "unknown" : names.driver);
        *at++ = '"';
        return at;
    }

    // The event's text and values under their keys, where it has a text.
    char* putWords(char* at, std::string_view textKey, std::string_view valuesKey,
                   const Event& event, uint64_t ticks) {
        if (event.text == nullptr) return at;
        at = putJsonText(putText(at, textKey), event, words_, ticks);
        return putJsonValues(putText(at, valuesKey), event, words_, ticks);
    }

    bool isAhead_ = true;  // in the first reading
    // Of the second, the stretch of slots in progress: no record from its begin on is earlier.
    uint64_t periodBegin_ = 0;
    Nanoseconds periodEarliest_ = std::numeric_limits<Nanoseconds>::min();
    SortedText events_;
    TextOutput* out_;
    EventWords words_;
};

}  // namespace

std::unique_ptr<Format> makeChrome(const FormatOptions& options, TextOutput& out) {
    return std::make_unique<Chrome>(options, out);
}

}  // namespace sonaprobe::scope
