// sonascope info: what is in a file, and is it sound.

#include <algorithm>
#include <map>
#include <memory>

#include "analysis/class_names.h"
#include "analysis/trace_report.h"
#include "scope/command.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/finding_text.h"
#include "scope/found_slots.h"
#include "scope/options.h"
#include "scope/table.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    std::vector<std::string> paths;
    uint64_t mostGrowth = ByteSource::kMostGrowth;
    bool quick = false;
    OutputOptions output;
};

// One file: its report, or why there is none.
struct FileReport {
    explicit FileReport(bool withCalls) : report(withCalls) {}

    std::string name;
    std::string packing;  // empty where it is not packed
    std::string damage;   // of packed data
    std::string trouble;  // why it is no trace
    uint64_t bytes = 0;
    TraceReport report;

    Status status() const {
        if (!trouble.empty()) return Status::trouble;
        const bool sound = report.findings().none() && damage.empty();
        return sound ? Status::done : Status::findings;
    }
};

void read(const std::string& path, uint64_t mostGrowth, FileReport& file) {
    FoundSlots slots(path, mostGrowth);
    if (slots.source().packing() != nullptr) file.packing = slots.source().packing();
    slots.forEachRun([&](const auto& found) { file.report.take(found); });
    file.report.finish();
    file.bytes = slots.bytes();
    if (slots.source().damage() != nullptr) file.damage = slots.source().damage();
    const std::string otherKind = slots.otherKind();
    if (!otherKind.empty()) file.trouble = "no trace: " + otherKind;
}

// "24 ticks a microsecond".
std::string divisorText(const TraceReport& report) {
    std::vector<std::pair<uint64_t, uint64_t>> bySlot;
    for (const auto& [value, slot] : report.divisors()) bySlot.emplace_back(slot, value);
    std::ranges::sort(bySlot);
    std::string text;
    for (const auto& [slot, value] : bySlot) text += (text.empty() ? "" : ", ") + countText(value);
    return text.empty() ? "none; 1,000 ticks a microsecond assumed" : text + " ticks a microsecond";
}

// "6: 0-3, 5, 7"; the first ones of many.
std::string processorsText(const std::map<uint32_t, uint64_t>& processors) {
    std::string text = countText(processors.size()) + ":";
    constexpr size_t kRoom = 50;
    for (auto at = processors.begin(); at != processors.end();) {
        if (text.size() > kRoom) return text + ", …";
        const uint32_t first = at->first;
        uint32_t last = first;
        while (++at != processors.end() && at->first == last + 1) last = at->first;
        text += (text.back() == ':' ? " " : ", ") + std::to_string(first);
        if (last != first) text += (last == first + 1 ? ", " : "-") + std::to_string(last);
    }
    return text;
}

std::string callsText(const CallCounts& calls) {
    std::string text = countText(calls.opened);
    const auto add = [&](uint64_t count, const char* what) {
        if (count > 0) text += ", " + countText(count) + " " + what;
    };
    add(calls.cutOff, "cut off");
    add(calls.unfinished, "unfinished");
    if (calls.orphanEnds > 0) text += "; " + countText(calls.orphanEnds) + " ends without a start";
    return text;
}

void printCounts(Output& out, const FileReport& file) {
    const TraceReport& report = file.report;
    const uint64_t records = report.slots().records();
    const auto put = [&](const char* label, const std::string& text) {
        constexpr size_t kWidth = 14;
        out.line(out.styled(label, {Tone::dim}) + std::string(kWidth - columnsOf(label), ' ') +
                 text);
    };
    put("slots", countText(report.slots().slots()) + ", " + countText(file.bytes) + " bytes" +
                     (file.packing.empty() ? "" : " packed with " + file.packing));
    put("records", countText(records));
    if (records > 0) {
        put("span", durationText(report.span()) + ", from " + timeText(report.begin()) +
                        " of the trace clock");
    }
    put("divisor", divisorText(report));
    if (records == 0) return;
    put("processors", processorsText(report.recordsOfProcessor()));
    put("threads", countText(report.clock().threads()));
    if (report.calls() != nullptr) put("calls", callsText(*report.calls()));
    const EventCounts events = report.events();
    put("points", countText(events.points));
    const auto putShare = [&](const char* label, uint64_t count) {
        put(label, countText(count) + ", " +
                       shareText(static_cast<double>(count) / static_cast<double>(records)));
    };
    putShare("printed", events.outcomes.printed);
    putShare("printed by -v", events.outcomes.verboseOnly);
    putShare("silent", events.outcomes.silent);
    putShare("unclassified", events.outcomes.unclassified);
}

void printClasses(Output& out, const TraceReport& report) {
    const auto records = static_cast<double>(report.slots().records());
    const std::map<uint32_t, uint64_t> counts = report.events().recordsOfClass;
    std::vector<std::pair<uint32_t, uint64_t>> classes(counts.begin(), counts.end());
    std::ranges::stable_sort(classes, std::ranges::greater(),
                             [](const auto& entry) { return entry.second; });
    Table table({{"class", Align::left}, {"records"}, {"share"}});
    for (const auto& [key, count] : classes) {
        table.add(
            {classNameOf(key), countText(count), shareText(static_cast<double>(count) / records)});
    }
    if (!table.empty()) table.print(out);
}

void print(Output& out, const FileReport& file) {
    if (!file.trouble.empty()) {
        out.line(file.name + ": " + file.trouble);
        return;
    }
    const Findings& findings = file.report.findings();
    const bool sound = file.status() == Status::done;
    out.line(out.styled(file.name, {Tone::head}) + ": " + (sound ? "sound" : "not sound"));
    printCounts(out, file);
    out.line("");
    printClasses(out, file.report);
    if (sound) return;
    out.line("");
    printFindings(out, findings, [](const Finding& finding) {
        return meaningOf(finding) + ". " + adviceOf(finding.kind);
    });
    if (!file.damage.empty()) out.line(file.packing + ": " + file.damage);
}

Json classesOf(const EventCounts& events) {
    Json classes = Json::array();
    for (const auto& [key, count] : events.recordsOfClass) {
        Json entry{{"name", classNameOf(key)}, {"class_word", codeText(key).substr(0, 6)}};
        if (classWordOf(key) == kAudioClassWord) entry["class"] = classIdOf(key);
        entry["records"] = count;
        classes.push_back(entry);
    }
    return classes;
}

Json jsonOf(const CallCounts& calls) {
    return {{"opened", calls.opened},
            {"finished", calls.finished},
            {"cut_off", calls.cutOff},
            {"unfinished", calls.unfinished},
            {"orphan_ends", calls.orphanEnds}};
}

Json jsonOf(const FileReport& file) {
    constexpr const char* kStates[] = {"sound", "findings", "unreadable"};
    Json entry{{"file", file.name}, {"state", kStates[static_cast<int>(file.status())]}};
    if (!file.trouble.empty()) {
        entry["trouble"] = file.trouble;
        return entry;
    }
    const TraceReport& report = file.report;
    if (!file.packing.empty()) entry["packing"] = file.packing;
    if (!file.damage.empty()) entry["packing_damage"] = file.damage;
    entry["bytes"] = file.bytes;
    entry["slots"] = report.slots().slots();
    entry["records"] = report.slots().records();
    entry["span_ns"] = report.span();
    entry["begin_kernel_time_ns"] = report.begin();
    entry["assumed_divisor"] = report.clock().assumedDivisor();
    entry["divisors"] = Json::array();
    for (const auto& [value, slot] : report.divisors()) {
        entry["divisors"].push_back(
            {{"ticks_per_microsecond", std::to_string(value)}, {"slot", slot}});
    }
    entry["processors"] = Json::array();
    for (const auto& [cpu, count] : report.recordsOfProcessor()) {
        entry["processors"].push_back({{"cpu", cpu}, {"records", count}});
    }
    entry["threads"] = report.clock().threads();
    const EventCounts events = report.events();
    entry["classes"] = classesOf(events);
    if (report.calls() != nullptr) entry["calls"] = jsonOf(*report.calls());
    entry["points"] = events.points;
    entry["printed"] = events.outcomes.printed;
    entry["printed_verbose_only"] = events.outcomes.verboseOnly;
    entry["silent"] = events.outcomes.silent;
    entry["unclassified"] = events.outcomes.unclassified;
    entry["findings"] = Json::array();
    for (const Finding& finding : report.findings().all()) {
        Json described = scope::jsonOf(finding);
        described["meaning"] = meaningOf(finding);
        described["advice"] = adviceOf(finding.kind);
        entry["findings"].push_back(described);
    }
    const Json notListed = notListedOf(report.findings());
    if (!notListed.empty()) entry["findings_not_listed"] = notListed;
    return entry;
}

Status run(const Options& options) {
    Output out(options.output);
    Json files = Json::array();
    Status status = Status::done;
    bool first = true;
    for (const std::string& path : options.paths) {
        FileReport file(!options.quick);
        file.name = escaped(path);
        try {
            read(path, options.mostGrowth, file);
        } catch (const Failure& failure) {
            file.trouble = failure.message;
        }
        status = std::max(status, file.status());
        if (out.json()) {
            files.push_back(jsonOf(file));
            continue;
        }
        if (!first) out.line("");
        first = false;
        print(out, file);
    }
    if (out.json()) printJson(out, {{"schema", schemaName("info")}, {"files", files}});
    out.finish();
    return status;
}

}  // namespace

Run setUpInfo(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addOperands(app, Operand::required, "FILE", options->paths,
                "raw files, packed or not; - for standard input");
    addGrowthOption(app, options->mostGrowth);
    addFlag(app, "--quick", options->quick, "count no calls, and look for no missing records");
    addOutputOptions(app, options->output);
    addExamples(app,
                "  sonascope info trace.raw\n"
                "  sonascope info --quick --json *.raw\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
