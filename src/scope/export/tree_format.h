// What folded and callgrind have in common: both are made of the call tree of each thread.

#pragma once

#include <string>
#include <vector>

#include "analysis/call_tree.h"
#include "scope/event_text.h"
#include "scope/export/format.h"
#include "scope/units.h"

namespace sonaprobe::scope {

class TreeFormat : public Format {
  public:
    TreeFormat(const FormatOptions& options, TextOutput& out) : out_(&out), names_(options.names) {}

    uint32_t opened(const TraceRecord&, const Call& call, bool, uint32_t above) override {
        // Calls deeper than any viewer shows are part of the last one that is shown.
        if (above != CallNode::kNone && nodes()[above].depth >= kMostDepth) return above;
        return tree_.open(call, above);
    }

    void closed(const ToldCall& told) override {
        if (told.selected) tree_.close(*told.call, *told.closing, told.note);
    }

  protected:
    const std::vector<CallNode>& nodes() const { return tree_.nodes(); }

    // The event, or the thread, that a node is about.
    std::string nameOf(const CallNode& node, const TraceClock& clock) const {
        if (node.code != CallNode::kThread) return eventText(node.code, *names_);
        return "thread " + shortWordText(clock.threadId(node.thread));
    }

    TextOutput& out() { return *out_; }

  private:
    static constexpr uint32_t kMostDepth = 1000;
    static_assert(kNoNote == CallNode::kNone);

    TextOutput* out_;
    const CodeNames* names_;
    CallTree tree_{CallTree::Threads::apart};
};

}  // namespace sonaprobe::scope
