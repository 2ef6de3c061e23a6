// Findings in words, for people and for programs.

#pragma once

#include <functional>
#include <string>

#include "analysis/finding.h"
#include "scope/json.h"

namespace sonaprobe::scope {

// "cut last slot".
const char* nameOf(FindingKind kind);

// What it is and what follows from it: "the last slot has 36 of its 64
// bytes".
std::string meaningOf(const Finding& finding);

// What to do about it.
const char* adviceOf(FindingKind kind);

// What repair does about it: "left out". Null where it leaves the file as it is.
const char* repairOf(FindingKind kind);

// "kind", "slot", "last_slot", and what else is known of it.
Json jsonOf(const Finding& finding);

// How many more there were of the kinds of which not all are kept, by their JSON names.
Json notListedOf(const Findings& findings);

// Findings as a block of lines: the slot, the name, then what `tell` says of each. On a terminal
// long texts go on below themselves; elsewhere each finding is one line.
void printFindings(Output& out, const Findings& findings,
                   const std::function<std::string(const Finding&)>& tell);

}  // namespace sonaprobe::scope
