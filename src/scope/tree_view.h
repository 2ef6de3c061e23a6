// A call tree as a table: the largest first, cut at a depth and a share.

#pragma once

#include <cstdint>
#include <vector>

#include "analysis/call_tree.h"
#include "lines/code_names.h"
#include "scope/json.h"
#include "scope/output.h"

namespace sonaprobe::scope {

struct TreeLimits {
    uint32_t depth = 0;  // levels that are shown
    double least = 0;    // the least share of the roots' time that is shown
    size_t top = 0;      // rows, those with the most time; 0 for all
};

class TreeView {
  public:
    // All but the limits must outlive this. The clock knows the threads by their numbers.
    TreeView(const CallTree& tree, const TraceClock& clock, const CodeNames& codeNames,
             const TreeLimits& limits);

    void print(Output& out) const;

    // Each node names its parent by its place in the list, or null.
    void write(JsonStream& out) const;

  private:
    std::string nameOf(const CallNode& node) const;

    const std::vector<CallNode>* nodes_;
    const TraceClock* clock_;
    const CodeNames* codeNames_;
    Nanoseconds whole_ = 0;        // the roots' time
    std::vector<uint32_t> shown_;  // nodes, each after its parent and the siblings before it
    uint64_t hidden_ = 0;          // how many are not shown
    Nanoseconds hiddenSelf_ = 0;
};

}  // namespace sonaprobe::scope
