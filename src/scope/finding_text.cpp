// Names, meanings and remedies of findings.

#include "scope/finding_text.h"

#include <algorithm>
#include <array>

#include "scope/event_text.h"
#include "scope/table.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr uint64_t kSlot = sizeof(TraceRecord);

struct KindText {
    FindingKind kind;
    const char* key;  // in JSON
    const char* name;
    const char* advice;
    const char* repair;
};

constexpr std::array<KindText, kFindingKinds> kKinds{{
    {FindingKind::misaligned, "misaligned", "misaligned", "sonascope repair realigns it",
     "left out, and the slots after it realigned"},
    {FindingKind::garbage, "garbage", "garbage",
     "what stood there is lost; sonascope repair leaves it out", "left out"},
    {FindingKind::otherByteOrder, "other_byte_order", "other byte order",
     "sonascope repair swaps the bytes", "swapped"},
    {FindingKind::cutSlot, "cut_slot", "cut last slot",
     "writing ended early: look for a full disk or a killed program; sonascope repair leaves it "
     "out",
     "left out"},
    {FindingKind::noDivisor, "no_divisor", "no divisor",
     "look for the file's beginning; without it times may be wrong", nullptr},
    {FindingKind::zeroDivisor, "zero_divisor", "zero divisor",
     "it is ignored; sonascope repair leaves it out", "left out"},
    {FindingKind::repeatedDivisor, "repeated_divisor", "repeated divisor",
     "it changes nothing; sonascope repair leaves it out", "left out"},
    {FindingKind::invalidSlots, "invalid_slots", "invalid",
     "they hold no records; sonascope repair leaves them out", "left out"},
    {FindingKind::emptySlots, "empty_slots", "empty",
     "what stood there never reached the disk; sonascope repair leaves them out", "left out"},
    {FindingKind::stepBack, "step_back", "step back",
     "two recordings in one file, or a clock that was set: compare no times across it", nullptr},
    {FindingKind::missingRecords, "missing_records", "missing records?",
     "record with a larger trace buffer: sonaprobe -b", nullptr},
}};

const KindText& textOf(FindingKind kind) {
    return *std::ranges::find(kKinds, kind, &KindText::kind);
}

std::string countOf(uint64_t count, const char* one) {
    return countText(count) + " " + one + (count == 1 ? "" : "s");
}

std::string toSlot(const Finding& finding) {
    return finding.slots() == 1 ? "" : ", to slot " + countText(finding.lastSlot);
}

std::string missingText(const MissingStretch& stretch) {
    const std::string event = eventText(stretch.code);
    std::string text =
        "between slots " + countText(stretch.after) + " and " + countText(stretch.before) + ": ";
    switch (stretch.sign) {
        case MissingSign::cutOffByEnd:
            text += event + " did not end before a call around it";
            break;
        case MissingSign::cutOffByStart: text += event + " did not end before it began anew"; break;
        case MissingSign::orphanEnd:
            text += event + " ended without a start inside another call";
            break;
        case MissingSign::orphanCycle: text += event + " ended without a start"; break;
        case MissingSign::sampleTime:
            text += event + " began whole buffers later than the one before told";
            break;
        case MissingSign::clock:
            text += "the clock jumps, and the sample times of " + event + " do not";
            break;
    }
    if (stretch.signs > 1) text += "; " + countOf(stretch.signs - 1, "more sign");
    return text;
}

const char* keyOf(MissingSign sign) {
    switch (sign) {
        case MissingSign::cutOffByEnd: return "cut_off_by_end";
        case MissingSign::cutOffByStart: return "cut_off_by_start";
        case MissingSign::orphanEnd: return "orphan_end";
        case MissingSign::orphanCycle: return "orphan_cycle";
        case MissingSign::sampleTime: return "sample_time";
        default: return "clock";
    }
}

// The text in lines of `width` columns, broken at blanks; the width 0 breaks nothing.
std::vector<std::string> wrapped(const std::string& text, size_t width) {
    std::vector<std::string> lines(1);
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        std::string& line = lines.back();
        if (width != 0 && !line.empty() && columnsOf(line) + 1 + columnsOf(word) > width) {
            lines.push_back(word);
        } else {
            line += (line.empty() ? "" : " ") + word;
        }
        begin = end + 1;
    }
    return lines;
}

}  // namespace

const char* nameOf(FindingKind kind) { return textOf(kind).name; }
const char* adviceOf(FindingKind kind) { return textOf(kind).advice; }
const char* repairOf(FindingKind kind) { return textOf(kind).repair; }

std::string meaningOf(const Finding& finding) {
    switch (finding.kind) {
        case FindingKind::misaligned:
            return "from here on slots do not begin at a multiple of 64 bytes; the next one begins "
                   "at byte " +
                   countText(finding.goesOnAt) + ", after " + countOf(finding.bytes, "byte") +
                   " of none";
        case FindingKind::garbage:
            return countOf(finding.bytes, "byte") + " that are no slots" + toSlot(finding);
        case FindingKind::otherByteOrder:
            return "written by a machine of the other byte order" + toSlot(finding);
        case FindingKind::cutSlot:
            return "the last slot has " + countText(finding.bytes) + " of its " + countText(kSlot) +
                   " bytes";
        case FindingKind::noDivisor:
            return "records without a divisor before them" + toSlot(finding) +
                   ": 1,000 ticks a microsecond are assumed";
        case FindingKind::zeroDivisor: return countOf(finding.slots(), "divisor") + " of 0";
        case FindingKind::repeatedDivisor:
            return countOf(finding.slots(), "divisor") + " of the value in force";
        case FindingKind::invalidSlots: return countOf(finding.slots(), "invalid slot");
        case FindingKind::emptySlots:
            return countOf(finding.slots(), "slot") + " of nothing but zeros";
        case FindingKind::stepBack:
            return "the clock steps back by " + durationText(finding.back) +
                   "; calls that are open end here";
        case FindingKind::missingRecords: return missingText(finding.missing);
    }
    return {};
}

Json jsonOf(const Finding& finding) {
    Json entry{{"kind", textOf(finding.kind).key},
               {"slot", finding.slot},
               {"last_slot", finding.lastSlot}};
    switch (finding.kind) {
        case FindingKind::misaligned: entry["goes_on_at_byte"] = finding.goesOnAt; [[fallthrough]];
        case FindingKind::garbage:
        case FindingKind::cutSlot: entry["bytes"] = finding.bytes; break;
        case FindingKind::stepBack: entry["back_ns"] = finding.back; break;
        case FindingKind::missingRecords:
            entry["sign"] = keyOf(finding.missing.sign);
            entry["signs"] = finding.missing.signs;
            addEvent(entry, finding.missing.code);
            break;
        default: break;
    }
    return entry;
}

Json notListedOf(const Findings& findings) {
    Json counts = Json::object();
    for (const KindText& kind : kKinds) {
        const uint64_t count = findings.count(kind.kind);
        if (count > Findings::kMostKept) counts[kind.key] = count - Findings::kMostKept;
    }
    return counts;
}

void printFindings(Output& out, const Findings& findings,
                   const std::function<std::string(const Finding&)>& tell) {
    constexpr size_t kLeastWidth = 20;
    const std::vector<Finding> all = findings.all();
    size_t slotWidth = 0;
    size_t nameWidth = 0;
    for (const Finding& finding : all) {
        slotWidth = std::max(slotWidth, countText(finding.slot).size());
        nameWidth = std::max(nameWidth, columnsOf(nameOf(finding.kind)));
    }
    const std::string indent(std::string("slot   ").size() + slotWidth + nameWidth + 2, ' ');
    const size_t room =
        out.width() == 0
            ? 0
            : std::max(out.width(), unsigned(indent.size() + kLeastWidth)) - indent.size();
    for (const Finding& finding : all) {
        const std::string slot = countText(finding.slot);
        const std::string name = nameOf(finding.kind);
        std::string begin = "slot " + std::string(slotWidth - slot.size(), ' ') + slot + "  ";
        begin += out.styled(name, {Tone::head}) + std::string(nameWidth - columnsOf(name) + 2, ' ');
        for (const std::string& line : wrapped(tell(finding), room)) {
            out.line(begin + line);
            begin = indent;
        }
    }
    for (const KindText& kind : kKinds) {
        const uint64_t count = findings.count(kind.kind);
        if (count <= Findings::kMostKept) continue;
        out.line("and " + countText(count - Findings::kMostKept) + " more: " + kind.name);
    }
}

}  // namespace sonaprobe::scope
