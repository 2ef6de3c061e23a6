// Words the answer of why.

#include "scope/why_report.h"

#include <algorithm>
#include <array>
#include <span>

#include "analysis/event_names.h"
#include "events/log_text.h"
#include "scope/escape.h"
#include "scope/event_text.h"
#include "scope/styled_line.h"
#include "scope/table.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

// Without --all.
constexpr size_t kFindings = 4;
constexpr size_t kLines = 8;  // of evidence for a finding
constexpr size_t kTimes = 4;  // of its dropouts

constexpr std::array<const char*, 9> kMeanings = {
    "a client's call took the time",
    "a driver's call on the I/O thread took the time",
    "the I/O thread waited while another thread was in this call",
    "other work had the I/O thread's processor",
    "the cycle began late, and nothing on its processor says why",
    "a time stamp moved the target; the cycle was in time",
    "the engine was stopped, paused or reconfigured, or lost its device, across the cycle",
    "records are missing; this is the first slot after the gap",
    "the records do not tell",
};

void sortUnique(std::vector<uint64_t>& slots) {
    std::ranges::sort(slots);
    slots.erase(std::unique(slots.begin(), slots.end()), slots.end());
}

std::string_view nameOf(DropoutCause cause) {
    return kDropoutCauses.at(static_cast<size_t>(cause));
}

std::string plural(uint64_t count, const std::string& one) {
    return countText(count) + " " + one + (count == 1 ? "" : "s");
}

std::string culpritText(const Dropout& dropout, const CodeNames& names) {
    const auto& culprit = dropout.verdict.culprit;
    if (!culprit) return {};
    if (!culprit->code) return "slot " + countText(culprit->slot);
    return eventText(*culprit->code, names) + " on thread " + shortWordText(culprit->thread);
}

// As many of a dropout's records as may be shown; the last ones stand nearest to the dropout.
std::vector<uint64_t> evidenceOf(const Dropout& dropout, bool all) {
    std::vector<uint64_t> slots = dropout.verdict.evidence;
    if (!all && slots.size() > kLines) {
        slots.erase(slots.begin(), slots.end() - static_cast<std::ptrdiff_t>(kLines));
    }
    return slots;
}

void printRecord(Output& out, uint64_t slot, const EvidenceRecord& shown, const CodeNames& names) {
    const TraceRecord& record = shown.record;
    const Event event = decode(record);
    const Qualifier qualifier = qualifierOf(record.debugid);
    StyledLine line;
    line.add("    ");
    line.addRight(timeText(shown.time), 14);
    line.add("  slot " + countText(slot) + "  " + shortWordText(record.arg5) + " ", {Tone::dim});
    line.add(qualifier == Qualifier::start ? "-> "
             : qualifier == Qualifier::end ? "<- "
                                           : "   ",
             {Tone::dim});
    const bool isDropout = codeOf(record.debugid) == kOverload;
    line.addName(eventName(event, names),
                 isDropout ? Style{Tone::dropout} : Style{Tone::driver, hueOf(record.debugid)},
                 out);
    if (event.text != nullptr) {
        char text[kLogTextRoom];
        const char* const end = putLogText(text, event, shown.ticksPerMicrosecond);
        line.add("  " + escaped({text, static_cast<size_t>(end - text)}),
                 isFailure(event) ? Style{Tone::failure} : Style{});
    }
    line.print(out, false, 0);
}

// A sentence, wrapped on a terminal.
void printWrapped(Output& out, const std::string& text) {
    StyledLine line;
    line.add(text);
    line.print(out, true, 2);
}

std::span<const DropoutFinding> findingsShown(const WhyAnswer& answer, bool all) {
    const std::span findings(answer.findings);
    return all ? findings : findings.first(std::min(findings.size(), kFindings));
}

// How many of a finding's dropouts are named by their times.
size_t timesShown(const DropoutFinding& finding, bool all) {
    return all ? finding.dropouts.size() : std::min(finding.dropouts.size(), kTimes);
}

void printFinding(Output& out, const WhyAnswer& answer, const DropoutFinding& finding,
                  const CodeNames& names, bool all) {
    const Dropout& first = answer.dropouts[finding.dropouts.front()];
    StyledLine head;
    head.add(std::string(nameOf(first.verdict.cause)), {Tone::head});
    const std::string culprit = culpritText(first, names);
    if (!culprit.empty()) {
        const auto code = first.verdict.culprit->code;
        head.add("  " + culprit, code ? Style{Tone::driver, hueOf(*code)} : Style{});
    }
    head.add("  " + std::string(kCertainties.at(static_cast<size_t>(first.verdict.certainty))),
             {Tone::dim});
    head.print(out, true, 2);
    printWrapped(out, "  " + meaningOf(first.verdict));

    std::string what = "  " + plural(finding.dropouts.size(), "dropout");
    if (finding.lacking > 0) {
        what += ", " + durationText(finding.mostLacking) + " lacking";
        if (finding.dropouts.size() > 1) what += " at most";
    }
    what += ",";
    std::string when = "at ";
    const size_t times = timesShown(finding, all);
    for (size_t i = 0; i < times; ++i) {
        const uint64_t slot = answer.dropouts[finding.dropouts[i]].slot;
        when += (i == 0 ? "" : ", ") + timeText(answer.evidence.at(slot).time);
    }
    if (times < finding.dropouts.size()) when += ", …";
    const bool fits = out.width() == 0 || columnsOf(what + " " + when) <= out.width();
    if (!fits) out.line(what);
    printWrapped(out, (fits ? what + " " : "  ") + when);
    const size_t shown = all ? finding.dropouts.size() : 1;
    for (size_t i = 0; i < shown; ++i) {
        for (const uint64_t slot : evidenceOf(answer.dropouts[finding.dropouts[i]], all)) {
            printRecord(out, slot, answer.evidence.at(slot), names);
        }
        if (i + 1 < shown) out.line("");
    }
}

void printThreads(Output& out, const WhyAnswer& answer) {
    Table table({{"I/O thread", Align::left},
                 {"budget"},
                 {"cycles"},
                 {"healthy"},
                 {"p50"},
                 {"p99"},
                 {"max"},
                 {"margin", Align::right, 80},
                 {"near misses"}});
    for (const IoSummary& thread : answer.threads) {
        const bool known = thread.healthy > 0;
        const auto time = [&](Nanoseconds value) { return known ? durationText(value) : "-"; };
        table.add({shortWordText(thread.thread), time(thread.budget), countText(thread.cycles),
                   countText(thread.healthy), time(thread.p50), time(thread.p99),
                   time(thread.longest), time(thread.margin), countText(thread.nearMisses)});
    }
    table.print(out);
    for (const IoSummary& thread : answer.threads) {
        if (!thread.worstNearMiss) continue;
        printWrapped(out, "thread " + shortWordText(thread.thread) + ": the nearest miss ended " +
                              durationText(thread.worstLateness) + " after its deadline, at slot " +
                              countText(*thread.worstNearMiss));
    }
}

Json culpritOf(const Verdict& verdict) {
    if (!verdict.culprit) return nullptr;
    const Culprit& culprit = *verdict.culprit;
    Json json;
    if (culprit.code) {
        const EventName name = sonaprobe::nameOf(*culprit.code);
        if (!name.full.empty()) {
            json["driver"] = name.group;
            json["method"] = name.method;
        }
        json["code"] = codeText(*culprit.code);
        json["thread"] = wordText(culprit.thread);
        json["cpu"] = culprit.cpu;
    }
    json["slot"] = culprit.slot;
    return json;
}

Json dropoutJson(const Dropout& dropout) {
    const Verdict& verdict = dropout.verdict;
    Json json{
        {"slot", dropout.slot}, {"time_ns", dropout.time}, {"thread", wordText(dropout.thread)}};
    json["budget_ns"] = dropout.budget ? Json(*dropout.budget) : Json();
    json["lacking_ns"] = dropout.lacking ? Json(*dropout.lacking) : Json();
    json["cause"] = nameOf(verdict.cause);
    json["certainty"] = kCertainties.at(static_cast<size_t>(verdict.certainty));
    json["share"] = verdict.share;
    json["carried"] = verdict.carried;
    json["culprit"] = culpritOf(verdict);
    json["evidence"] = verdict.evidence;
    return json;
}

}  // namespace

std::string meaningOf(const Verdict& verdict) {
    return std::string(kMeanings.at(static_cast<size_t>(verdict.cause))) +
           (verdict.carried ? ", in the cycle before" : "");
}

std::vector<std::string> limitsOf(const IoTrace& trace, const std::vector<TimedThread>& threads) {
    std::vector<std::string> limits;
    if (trace.records == 0) {
        limits.push_back("The trace has no records.");
    } else if (trace.serverRecords == 0) {
        limits.push_back(
            "The audio server has left no records: dropouts cannot be seen. sonaprobe -w keeps "
            "them "
            "whatever -A says, so the server was not running, or its group was filtered out.");
    } else if (threads.empty()) {
        limits.push_back("There are no I/O cycles, so no cycle's time is known.");
    } else if (trace.records == trace.serverRecords) {
        limits.push_back(
            "No driver has left a record: who else was at work is not known. Drivers trace while "
            "bit "
            "0 of the audio debug flags is set.");
    }
    if (trace.orphanEnds > 0) {
        limits.push_back("Of " + plural(trace.orphanEnds, "call") +
                         " the start is missing: records are lost, or the trace begins inside.");
    }
    if (trace.unseenDropouts > 0) {
        limits.push_back(
            plural(trace.unseenDropouts, "dropout") +
            " too many: their records were not kept. sonascope cut makes a smaller trace.");
    }
    if (trace.restarts > 0) {
        limits.push_back("The clock steps back " + plural(trace.restarts, "time") +
                         ": nothing is concluded across.");
    }
    if (trace.assumedDivisor) {
        limits.push_back("No divisor says how long a tick is; 1000 a microsecond are assumed.");
    }
    for (const TimedThread& timed : threads) {
        if (timed.clockShift == 0) continue;
        limits.push_back("The host clock of thread " + shortWordText(timed.io->id) +
                         " is not the trace's; its times are shifted by " +
                         durationText(timed.clockShift) + ".");
    }
    return limits;
}

std::vector<uint64_t> evidenceSlots(const std::vector<Dropout>& dropouts) {
    std::vector<uint64_t> slots;
    for (const Dropout& dropout : dropouts) {
        slots.insert(slots.end(), dropout.verdict.evidence.begin(), dropout.verdict.evidence.end());
    }
    sortUnique(slots);
    return slots;
}

std::vector<uint64_t> shownSlots(const WhyAnswer& answer, bool all) {
    std::vector<uint64_t> slots;
    for (const DropoutFinding& finding : findingsShown(answer, all)) {
        for (size_t i = 0; i < timesShown(finding, all); ++i) {
            slots.push_back(answer.dropouts[finding.dropouts[i]].slot);
        }
        const size_t shown = all ? finding.dropouts.size() : 1;
        for (size_t i = 0; i < shown; ++i) {
            const auto evidence = evidenceOf(answer.dropouts[finding.dropouts[i]], all);
            slots.insert(slots.end(), evidence.begin(), evidence.end());
        }
    }
    sortUnique(slots);
    return slots;
}

void printWhy(Output& out, const WhyAnswer& answer, const CodeNames& names, bool all) {
    const std::string ofAll = answer.dropouts.size() == answer.found
                                  ? ""
                                  : " of the " + countText(answer.found) + " in this trace";
    if (answer.found == 0) {
        out.line("No dropout in this trace.");
    } else if (answer.dropouts.empty()) {
        out.line("No dropout" + ofAll + " is selected.");
    } else {
        out.line(out.styled(plural(answer.dropouts.size(), "dropout"), {Tone::dropout}) + ofAll +
                 ", " + plural(answer.findings.size(), "finding"));
    }
    const auto shown = findingsShown(answer, all);
    for (const DropoutFinding& finding : shown) {
        out.line("");
        printFinding(out, answer, finding, names, all);
    }
    if (shown.size() < answer.findings.size()) {
        out.line("");
        out.line(plural(answer.findings.size() - shown.size(), "more finding") +
                 "; --all shows them");
    }
    if (!answer.threads.empty()) {
        out.line("");
        printThreads(out, answer);
    }
    if (answer.limits.empty()) return;
    out.line("");
    out.line(out.styled("What this trace cannot show", {Tone::head}));
    for (const std::string& limit : answer.limits) printWrapped(out, "  " + limit);
}

void printWhyJson(Output& out, const WhyAnswer& answer) {
    Json json{{"schema", schemaName("why")}, {"file", answer.file}, {"records", answer.records}};
    json["dropouts"] = Json::array();
    for (const Dropout& dropout : answer.dropouts) {
        json["dropouts"].push_back(dropoutJson(dropout));
    }
    json["findings"] = Json::array();
    for (const DropoutFinding& finding : answer.findings) {
        Json slots = Json::array();
        for (const size_t dropout : finding.dropouts)
            slots.push_back(answer.dropouts[dropout].slot);
        const Verdict& verdict = answer.dropouts[finding.dropouts.front()].verdict;
        json["findings"].push_back({{"cause", nameOf(verdict.cause)},
                                    {"culprit", culpritOf(verdict)},
                                    {"dropouts", slots},
                                    {"lacking_ns", finding.lacking}});
    }
    json["io_threads"] = Json::array();
    for (const IoSummary& thread : answer.threads) {
        Json entry{{"thread", wordText(thread.thread)}, {"cycles", thread.cycles},
                   {"healthy", thread.healthy},         {"near_misses", thread.nearMisses},
                   {"overloaded", thread.overloaded},   {"clock_shift_ns", thread.clockShift}};
        if (thread.healthy > 0) {
            entry["budget_ns"] = thread.budget;
            entry["p50_ns"] = thread.p50;
            entry["p99_ns"] = thread.p99;
            entry["max_ns"] = thread.longest;
            entry["margin_ns"] = thread.margin;
        }
        json["io_threads"].push_back(std::move(entry));
    }
    json["limits"] = answer.limits;
    printJson(out, json);
}

}  // namespace sonaprobe::scope
