// The answer of why, for people and as JSON.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "analysis/dropout_findings.h"
#include "lines/code_names.h"
#include "scope/json.h"
#include "scope/output.h"

namespace sonaprobe::scope {

// A record that is shown as evidence.
struct EvidenceRecord {
    TraceRecord record{};
    Nanoseconds time = 0;  // as it is shown
    double ticksPerMicrosecond = 0;
};

struct WhyAnswer {
    std::string file{};
    uint64_t records = 0;
    uint64_t serverRecords = 0;
    size_t found = 0;                 // dropouts in the trace
    std::vector<Dropout> dropouts{};  // those that are selected
    std::vector<DropoutFinding> findings{};
    std::vector<IoSummary> threads{};
    std::vector<std::string> limits{};              // what the trace cannot show
    std::map<uint64_t, EvidenceRecord> evidence{};  // by slot
};

// What a cause means, in words.
std::string meaningOf(const Verdict& verdict);

// What the trace cannot show, in sentences.
std::vector<std::string> limitsOf(const IoTrace& trace, const std::vector<TimedThread>& threads);

// The slots of all evidence, ascending.
std::vector<uint64_t> evidenceSlots(const std::vector<Dropout>& dropouts);

// The slots that printWhy() will show, ascending.
std::vector<uint64_t> shownSlots(const WhyAnswer& answer, bool all);

// Without `all` a screen's worth: the first findings, each with a few lines of its clearest
// dropout.
void printWhy(Output& out, const WhyAnswer& answer, const CodeNames& names, bool all);
void printWhyJson(Output& out, const WhyAnswer& answer);

}  // namespace sonaprobe::scope
