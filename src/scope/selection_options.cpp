// Reads the selection's options, and the trace once where calls or dropouts decide.

#include "scope/selection_options.h"

#include <algorithm>

#include "analysis/call_tracker.h"
#include "analysis/event_traits.h"
#include "analysis/spelled.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/records.h"
#include "scope/repeatable.h"

namespace sonaprobe::scope {

namespace {

constexpr const char* kHeading = "Selection";  // in the help

constexpr const char* kTimeHelp = "give a number and a unit, such as 12.345s, 20ms or 412us";

[[noreturn]] void refuse(const std::string& option, const std::string& message) {
    throw Failure{"--" + option + ": " + message};
}

std::optional<Nanoseconds> timeOf(const char* option, const std::string& text) {
    if (text.empty()) return std::nullopt;
    const std::optional<Nanoseconds> time = spelledTime(text);
    if (!time) refuse(option, "'" + escaped(text) + "' is no time; " + kTimeHelp);
    return time;
}

// "dropout=20ms"
std::optional<Nanoseconds> aroundOf(const std::string& text) {
    constexpr std::string_view kDropout = "dropout=";
    if (text.empty()) return std::nullopt;
    if (!text.starts_with(kDropout)) {
        refuse("around", "'" + escaped(text) + "' is not dropout=TIME, such as dropout=20ms");
    }
    return timeOf("around", text.substr(kDropout.size()));
}

std::vector<uint64_t> numbersOf(const char* option, const std::vector<std::string>& texts) {
    std::vector<uint64_t> numbers;
    for (const std::string& text : texts) {
        const std::optional<uint64_t> number = spelledNumber(text);
        if (!number) {
            refuse(option, "'" + escaped(text) + "' is no number, decimal or after 0x hexadecimal");
        }
        numbers.push_back(*number);
    }
    return numbers;
}

// Finds the dropouts, and the slots of calls that are long enough.
class Survey : public CallSink {
  public:
    explicit Survey(const Criteria& criteria) : criteria_(&criteria) {}

    uint32_t opened(const TraceRecord&, const Call&, const Call*) override { return 0; }
    void closed(const Call& call, const Call*, const Closing& closing) override {
        if (!criteria_->longer || closing.lengthOf(call) < *criteria_->longer) return;
        slots.push_back(call.startSlot);
        if (closing.how == CallEnd::finished) slots.push_back(closing.slot);
    }
    void point(const TraceRecord&, const Moment&) override {}
    void orphanEnd(const TraceRecord&, const Moment&) override {}

    std::vector<Nanoseconds> dropouts;
    std::vector<uint64_t> slots;

  private:
    const Criteria* criteria_;
};

void survey(Selection& selection, const TraceOptions& trace) {
    Survey found(selection.criteria());
    CallTracker tracker(found);
    Input input(trace);
    trackCalls(input, tracker, [&](const TraceRecord& record, const Moment& moment) {
        if (codeOf(record.debugid) != kOverload) return;
        found.dropouts.push_back(trace.kernelTime ? tracker.clock().kernelTime(record)
                                                  : moment.time);
    });
    std::ranges::sort(found.dropouts);
    std::ranges::sort(found.slots);
    selection.setDropouts(found.dropouts);
    selection.setLongCalls(std::move(found.slots));
}

}  // namespace

void addSelectionOptions(CLI::App& app, SelectionOptions& options) {
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help) {
        putBelow(kHeading, addValue(app, name, type, value, help));
    };
    const auto addEach = [&](const char* name, std::vector<std::string>& values, const char* type,
                             const char* help) {
        putBelow(kHeading, addValues(app, name, type, values, help));
    };
    add("--from", options.from, "TIME", "from this time on: 12.345s, 20ms, 412us");
    add("--to", options.to, "TIME", "before this time");
    add("--around", options.around, "WHAT=TIME", "so near to a dropout: dropout=20ms");
    addEach("--driver", options.drivers, "DRIVER", "of this driver, or of one of several");
    addEach("--method", options.methods, "METHOD", "of this method: enable, OrvelHDAPath::enable");
    addEach("--thread", options.threads, "ID", "of this thread");
    addEach("--cpu", options.cpus, "N", "of this processor");
    addEach("--object", options.objects, "ADDRESS", "of this object");
    add("--longer", options.longer, "TIME", "start and end of calls that took at least so long");
    putBelow(kHeading, addFlag(app, "--failed", options.failed, "records that tell of a failure"));
    add("--where", options.where, "CONDITION", "by values: 'pin nodeID == 21 && result != 0'");
}

CLI::Option* addSortedOption(CLI::App& app, bool& sorted) {
    return putBelow(
        kHeading,
        addFlag(app, "--sorted", sorted,
                "time never steps back in the file, and it has one divisor: search for --from "
                "and --to, and leave unread what is not between them"));
}

Selection selectionOf(const SelectionOptions& options, TraceOptions& trace) {
    Criteria criteria{
        .from = timeOf("from", options.from),
        .to = timeOf("to", options.to),
        .aroundDropouts = aroundOf(options.around),
        .drivers = options.drivers,
        .methods = options.methods,
        .threads = numbersOf("thread", options.threads),
        .cpus = numbersOf("cpu", options.cpus),
        .objects = numbersOf("object", options.objects),
        .longer = timeOf("longer", options.longer),
        .failed = options.failed,
        .where = options.where,
    };
    if (criteria.from && criteria.to && *criteria.to <= *criteria.from) {
        refuse("to", options.to + " is not after --from, " + options.from);
    }
    auto made = Selection::make(std::move(criteria));
    if (const Refusal* const refusal = std::get_if<Refusal>(&made)) {
        refuse(refusal->option, refusal->message);
    }
    Selection selection = std::move(std::get<Selection>(made));
    if (selection.needsSurvey()) {
        makeRepeatable(trace);
        survey(selection, trace);
    }
    return selection;
}

}  // namespace sonaprobe::scope
