// Lays out histograms and calls.

#include "scope/call_report.h"

#include <algorithm>
#include <array>

#include "analysis/event_traits.h"
#include "events/log_text.h"
#include "scope/escape.h"
#include "scope/table.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kBarOfPipe = 40;

// A bar of `eighths` eighths of a column.
std::string barOf(size_t eighths) {
    constexpr std::array kParts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    std::string bar;
    for (size_t i = 0; i < eighths / 8; ++i) bar += "█";
    return bar + kParts[eighths % 8];
}

struct Bounds {
    size_t first;
    size_t last;
};

// The places that are not empty, and those between them.
std::optional<Bounds> boundsOf(const Histogram& histogram) {
    const auto& counts = histogram.counts();
    const auto isSome = [](uint64_t count) { return count > 0; };
    const auto first = std::ranges::find_if(counts, isSome);
    if (first == counts.end()) return {};
    const auto last = std::find_if(counts.rbegin(), counts.rend(), isSome);
    return Bounds{static_cast<size_t>(first - counts.begin()),
                  static_cast<size_t>(counts.rend() - last) - 1};
}

}  // namespace

void CallReport::print(Output& out, const Histogram& histogram) const {
    std::string names;
    for (const uint32_t code : histogram.codes()) {
        names += (names.empty() ? "" : ", ") + eventText(code, *codeNames_);
    }
    out.line("");
    out.line(out.styled("Times of " + names, {Tone::head}));
    const std::optional<Bounds> bounds = boundsOf(histogram);
    if (!bounds) {
        out.line("no finished calls");
        return;
    }
    const uint64_t most = std::ranges::max(histogram.counts());
    const size_t room = out.width() > 40 ? out.width() - 30 : kBarOfPipe;
    Table table({{"from"}, {"calls"}, {"", Align::left}});
    for (size_t i = bounds->first; i <= bounds->last; ++i) {
        const uint64_t count = histogram.counts()[i];
        const double share = static_cast<double>(count) / static_cast<double>(most);
        const auto eighths = static_cast<size_t>(share * static_cast<double>(8 * room));
        // What is not empty has at least the thinnest bar.
        table.add({durationText(i == 0 ? 0 : static_cast<Nanoseconds>(uint64_t{1} << i)),
                   countText(count), barOf(count == 0 ? 0 : std::max<size_t>(eighths, 1))});
    }
    table.print(out);
}

Json CallReport::toJson(const Histogram& histogram) const {
    Json json;
    json["codes"] = Json::array();
    for (const uint32_t code : histogram.codes()) json["codes"].push_back(codeText(code));
    json["buckets"] = Json::array();
    const std::optional<Bounds> bounds = boundsOf(histogram);
    if (!bounds) return json;
    for (size_t i = bounds->first; i <= bounds->last; ++i) {
        json["buckets"].push_back({{"from_ns", i == 0 ? 0 : uint64_t{1} << i},
                                   {"to_ns", uint64_t{2} << i},
                                   {"calls", histogram.counts()[i]}});
    }
    return json;
}

// The words of a record; nothing where its event has none for it.
std::string CallReport::textOf(const TraceRecord& record) const {
    const Event event = decode(record);
    if (event.text == nullptr) return {};
    std::array<char, kLogTextRoom> room{};
    const auto ticks = static_cast<double>(clock_->ticksPerMicrosecond());
    const char* const end = putLogText(room.data(), event, ticks);
    return escaped(std::string_view(room.data(), static_cast<size_t>(end - room.data())));
}

void CallReport::print(Output& out, const std::vector<LongCall>& calls) const {
    out.line("");
    out.line(out.styled("The longest calls", {Tone::head}));
    for (const LongCall& call : calls) {
        const uint32_t code = call.call.code;
        out.line(durationText(call.length()) + "  at " + timeText(call.shownStart) + "  thread " +
                 shortWordText(call.start.arg5) + "  " +
                 out.styled(eventText(code, *codeNames_), {Tone::driver, hueOf(code)}));
        const auto printRecord = [&](const char* arrow, uint64_t slot, const TraceRecord& record) {
            const bool failed = isFailure(record);
            out.line(std::string("    ") + arrow + " " +
                     out.styled("slot " + std::to_string(slot), {Tone::dim}) + "  " +
                     out.styled(textOf(record), {failed ? Tone::failure : Tone::plain}));
        };
        printRecord("->", call.call.startSlot, call.start);
        printRecord("<-", call.endSlot, call.end);
    }
    if (calls.empty()) out.line("no finished calls");
}

Json CallReport::toJson(const std::vector<LongCall>& calls) const {
    Json list = Json::array();
    for (const LongCall& call : calls) {
        Json& entry = list.emplace_back(Json::object());
        addEvent(entry, call.call.code, *codeNames_);
        entry["duration_ns"] = call.length();
        entry["self_ns"] = call.length() - call.call.inside;
        entry["start_ns"] = call.shownStart;
        entry["thread"] = wordText(call.start.arg5);
        entry["cpu"] = call.call.cpu;
        if (hasObject(call.call.code)) entry["object"] = wordText(call.call.object);
        entry["depth"] = call.call.depth;
        entry["start_slot"] = call.call.startSlot;
        entry["end_slot"] = call.endSlot;
        entry["start_text"] = textOf(call.start);
        entry["end_text"] = textOf(call.end);
    }
    return list;
}

}  // namespace sonaprobe::scope
