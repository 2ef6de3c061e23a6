// Reads conditions, and asks records.

#include "scope/catch/trigger.h"

#include <algorithm>

#include "analysis/event_traits.h"
#include "analysis/spelled.h"
#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

constexpr std::string_view kLonger = "longer ";

// Calls whose ends are never traced must not fill the memory of hours.
constexpr size_t kMostOpen = 1 << 16;
constexpr size_t kMostThreads = 1 << 16;

[[noreturn]] void refuse(const std::string& message) { throw Failure{"--on: " + message}; }

Selection selectionBy(Criteria criteria) {
    auto made = Selection::make(std::move(criteria));
    if (const Refusal* const refusal = std::get_if<Refusal>(&made)) refuse(refusal->message);
    return std::move(std::get<Selection>(made));
}

}  // namespace

void Trigger::LongestEnded::closed(const Call& call, const Call*, const Closing& closing) {
    if (closing.how == CallEnd::finished) length = std::max(length, closing.lengthOf(call));
}

Trigger::Condition Trigger::conditionOf(const std::string& text) {
    if (text == "dropout") return {.text = text, .dropout = true};
    if (text == "failure") return {.text = text, .selection = selectionBy({.failed = true})};
    if (text.starts_with(kLonger)) {
        const std::optional<Nanoseconds> time = spelledTime(text.substr(kLonger.size()));
        if (!time) refuse("'" + escaped(text) + "' has no time, such as in 'longer 5ms'");
        return {.text = text, .longer = time};
    }
    if (text.find_first_of("=<>!") != std::string::npos) {
        return {.text = text, .selection = selectionBy({.where = text})};
    }
    if (text.empty()) refuse("name dropout, failure, 'longer 5ms', an event or a condition");
    return {.text = text, .selection = selectionBy({.methods = {text}})};
}

Trigger::Trigger(const std::vector<std::string>& conditions) {
    for (const std::string& text : conditions) conditions_.push_back(conditionOf(text));
}

void Trigger::beginAnew(uint64_t ticksPerMicrosecond) {
    ticksPerMicrosecond_ = ticksPerMicrosecond;
    const bool asked = std::ranges::any_of(
        conditions_, [](const Condition& condition) { return condition.longer.has_value(); });
    if (!asked) return;
    calls_.emplace(ended_);
    TraceRecord divisor{};
    divisor.timestamp = ticksPerMicrosecond;
    divisor.debugid = kDivisorMarker;
    calls_->take(divisor);
}

std::optional<std::string_view> Trigger::take(const TraceRecord& record) {
    ended_.length = -1;
    if (calls_) {
        calls_->take(record);
        if (calls_->openCalls().size() > kMostOpen || calls_->clock().threads() > kMostThreads) {
            beginAnew(ticksPerMicrosecond_);
        }
    }
    for (const Condition& condition : conditions_) {
        const bool met = condition.dropout  ? codeOf(record.debugid) == kOverload
                         : condition.longer ? ended_.length >= *condition.longer
                                            : condition.selection.contains(record, 0, 0);
        if (met) return condition.text;
    }
    return std::nullopt;
}

}  // namespace sonaprobe::scope
