// One line, or one JSON document, for each record that is selected.

#include "scope/line_view.h"

#include <algorithm>

#include "analysis/event_traits.h"
#include "events/log_text.h"
#include "scope/call_view.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/json.h"
#include "scope/styled_line.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kTimeWidth = 12;
constexpr size_t kSinceWidth = 8;
constexpr size_t kThreadWidth = 10;
constexpr size_t kLevelWidth = 2;
constexpr size_t kMostLevels = 20;  // deeper calls are indented no further
// The least width at which a line has a column more than in 80 columns. Piped lines have all.
constexpr unsigned kShowsCpu = 110;
constexpr unsigned kShowsObject = 150;

// What a line is made of.
struct Line {
    const TraceRecord* record;
    uint64_t slot;
    Nanoseconds time;  // as it is shown
    const CallView::Place* place;
    Event event;
};

std::string textOf(const Event& event, double ticksPerMicrosecond) {
    if (event.text != nullptr) {
        char text[kLogTextRoom];
        const char* const end = putLogText(text, event, ticksPerMicrosecond);
        return escaped({text, static_cast<size_t>(end - text)});
    }
    if (event.outcome == Outcome::silent) return {};
    const TraceRecord& record = *event.record;
    std::string words;
    for (const uint64_t word : {record.arg1, record.arg2, record.arg3, record.arg4}) {
        words += (words.empty() ? "" : " ") + shortWordText(word);
    }
    return words;
}

const char* markOf(Qualifier qualifier) {
    switch (qualifier) {
        case Qualifier::start: return "-> ";
        case Qualifier::end: return "<- ";
        case Qualifier::none:
        case Qualifier::both: break;
    }
    return "   ";
}

Style styleOf(const Line& line) {
    const uint32_t code = codeOf(line.record->debugid);
    if (code == kOverload) return {Tone::dropout};
    if (isFailure(line.event)) return {Tone::failure};
    return {Tone::driver, hueOf(code)};
}

// A time without its unit, which every line would repeat.
std::string timeColumn(Nanoseconds time) {
    std::string text = timeText(time);
    text.resize(text.size() - std::string_view(" s").size());
    return text;
}

class LineView {
  public:
    LineView(Output& out, const CodeNames& names, bool wrap)
        : out_(&out), names_(&names), wrap_(wrap) {}

    void print(const Line& line, double ticksPerMicrosecond) {
        const TraceRecord& record = *line.record;
        const CallView::Place& place = *line.place;
        const bool whole = out_->width() == 0;
        made_.clear();
        made_.addRight(timeColumn(line.time), kTimeWidth);
        made_.add(" ");
        const std::string since = place.first ? "" : "+" + durationText(place.sinceLast);
        made_.addRight(place.sinceLast < 0 ? durationText(place.sinceLast) : since, kSinceWidth + 1,
                       {Tone::dim});
        made_.add(" ");
        made_.addRight(shortWordText(record.arg5), kThreadWidth, {Tone::dim});
        if (whole || out_->width() >= kShowsCpu) {
            made_.addRight(std::to_string(record.cpuid), 3, {Tone::dim});
        }
        made_.add("  ");
        made_.add(std::string(kLevelWidth * std::min<size_t>(place.depth, kMostLevels), ' '));
        const size_t indentation = made_.columns() + kLevelWidth;
        made_.add(markOf(qualifierOf(record.debugid)), {Tone::dim});
        const std::string name = eventName(line.event, *names_);
        wrap_ ? made_.add(name, styleOf(line)) : made_.addName(name, styleOf(line), *out_);
        if (hasObject(record.debugid) && (whole || out_->width() >= kShowsObject)) {
            made_.add(" (" + shortWordText(record.arg1) + ")", {Tone::dim});
        }
        if (place.ends) made_.add("  [" + durationText(place.duration) + "]", {Tone::head});
        if (const std::string text = textOf(line.event, ticksPerMicrosecond); !text.empty()) {
            made_.add("  ");
            made_.add(text, isFailure(line.event) ? Style{Tone::failure} : Style{});
        }
        made_.print(*out_, wrap_, indentation);
    }

  private:
    Output* out_;
    const CodeNames* names_;
    bool wrap_;
    StyledLine made_;
};

const char* qualifierName(Qualifier qualifier) {
    constexpr const char* kNames[] = {"none", "start", "end", "both"};
    return kNames[static_cast<size_t>(qualifier)];
}

// A value as its reading has it: numbers of 64 bits are strings.
Json valueJson(const Event& event, const Piece& piece, double ticksPerMicrosecond) {
    const Value value = valueOf(event, piece);
    switch (value.reading) {
        case Reading::signedDecimal:
            if (value.bits < 64) return static_cast<int64_t>(value.word);
            return std::to_string(static_cast<int64_t>(value.word));
        case Reading::unsignedDecimal:
            if (value.bits < 64) return value.word;
            return std::to_string(value.word);
        case Reading::hexadecimal:
            if (value.bits < 64) return value.word;
            return wordText(value.word);
        case Reading::pointer: return wordText(value.word);
        default: break;
    }
    char text[kLogTextRoom];
    const char* const end = putValue(text, event, piece, ticksPerMicrosecond);
    return std::string(text, static_cast<size_t>(end - text));
}

Json jsonOf(const Line& line, const CodeNames& names, double ticksPerMicrosecond) {
    const TraceRecord& record = *line.record;
    const CallView::Place& place = *line.place;
    const Event& event = line.event;
    Json json{{"slot", line.slot},
              {"time_ns", line.time},
              {"thread", wordText(record.arg5)},
              {"cpu", record.cpuid},
              {"code", codeText(codeOf(record.debugid))},
              {"qualifier", qualifierName(qualifierOf(record.debugid))},
              {"depth", place.depth}};
    if (event.outcome == Outcome::unknown) {
        json["name"] = eventName(event, names);
    } else {
        json["driver"] = groupOf(event);
        json["method"] = methodOf(event);
    }
    if (hasObject(record.debugid)) json["object"] = wordText(record.arg1);
    if (!place.first) json["since_last_ns"] = place.sinceLast;
    if (place.ends) json["duration_ns"] = place.duration;
    if (isFailure(event)) json["failure"] = true;
    if (event.text != nullptr) {
        json["text"] = textOf(event, ticksPerMicrosecond);
        Json values = Json::object();
        for (const Piece& piece : piecesOf(event)) {
            if (piece.reading == Reading::nothing) continue;
            values[std::string(valueOf(event, piece).name)] =
                valueJson(event, piece, ticksPerMicrosecond);
        }
        json["values"] = std::move(values);
    } else if (event.outcome == Outcome::unknown) {
        json["arguments"] = {wordText(record.arg1), wordText(record.arg2), wordText(record.arg3),
                             wordText(record.arg4)};
    }
    return json;
}

}  // namespace

void printLines(Input& input, const Selection& selection, const TraceOptions& trace, bool wrap,
                Output& out) {
    const CodeNames names = readCodeNames(trace.names);
    LineView view(out, names, wrap);
    CallView calls;
    if (out.json()) {
        printJsonLine(out, {{"schema", schemaName("lines")}, {"file", input.source().name()}});
    }
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        uint64_t number = input.firstSlot();
        for (const TraceRecord& slot : slots) {
            const uint64_t at = number++;
            const CallView::Place* const place = calls.take(slot);
            if (place == nullptr) continue;
            const TraceClock& clock = calls.clock();
            const Nanoseconds time = trace.kernelTime ? clock.kernelTime(slot) : place->time;
            if (!selection.contains(slot, at, time)) continue;
            const Line line{&slot, at, time, place, decode(slot)};
            const auto ticks = static_cast<double>(clock.ticksPerMicrosecond());
            if (out.json()) {
                printJsonLine(out, jsonOf(line, names, ticks));
            } else {
                view.print(line, ticks);
            }
        }
        out.show();
    }
    out.finish();
    warnOfDamage(input);
    warnOfAssumedDivisor(input, calls.clock());
}

}  // namespace sonaprobe::scope
