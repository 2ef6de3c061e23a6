// Gathers findings.

#include "analysis/finding.h"

#include <algorithm>

namespace sonaprobe {

namespace {

// Whether a row of slots like this one is one finding.
bool isStretch(FindingKind kind) {
    return kind == FindingKind::zeroDivisor || kind == FindingKind::repeatedDivisor ||
           kind == FindingKind::invalidSlots || kind == FindingKind::emptySlots;
}

}  // namespace

void Findings::add(const Finding& finding) {
    Kind& kind = kinds_[static_cast<size_t>(finding.kind)];
    const bool goesOn =
        isStretch(finding.kind) && kind.count > 0 && kind.lastSlot + 1 == finding.slot;
    kind.lastSlot = finding.lastSlot;
    if (goesOn) {
        if (kind.count <= kMostKept) all_[kind.last].lastSlot = finding.lastSlot;
        return;
    }
    if (++kind.count > kMostKept) return;
    kind.last = all_.size();
    all_.push_back(finding);
}

std::vector<Finding> Findings::all() const {
    std::vector<Finding> sorted = all_;
    std::ranges::stable_sort(sorted, {}, &Finding::slot);
    return sorted;
}

Finding* Findings::last(FindingKind kind) {
    const Kind& known = kinds_[static_cast<size_t>(kind)];
    return known.count == 0 || known.count > kMostKept ? nullptr : &all_[known.last];
}

}  // namespace sonaprobe
