// Orders a call tree and lays it out.

#include "scope/tree_view.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include "scope/event_text.h"
#include "scope/table.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr size_t kIndent = 2;

// The time of each node; of one whose own calls are not selected, that of those below it.
std::vector<Nanoseconds> weightsOf(const std::vector<CallNode>& nodes) {
    std::vector<Nanoseconds> weights(nodes.size());
    std::vector<Nanoseconds> below(nodes.size());
    for (size_t i = nodes.size(); i-- > 0;) {
        weights[i] = std::max(nodes[i].time, below[i]);
        if (nodes[i].parent == CallNode::kNone) continue;
        Nanoseconds& sum = below[nodes[i].parent];
        addTo(sum, weights[i]);
    }
    return weights;
}

// Of each node, whether any call counts there or below it.
std::vector<bool> countsOf(const std::vector<CallNode>& nodes) {
    std::vector<bool> counts(nodes.size());
    for (size_t i = nodes.size(); i-- > 0;) {
        if (nodes[i].calls > 0) counts[i] = true;
        if (counts[i] && nodes[i].parent != CallNode::kNone) counts[nodes[i].parent] = true;
    }
    return counts;
}

// The nodes of a tree by their parents, the heaviest last.
class Children {
  public:
    Children(const std::vector<CallNode>& nodes, const std::vector<Nanoseconds>& weights)
        : nodes_(&nodes), order_(nodes.size()) {
        std::iota(order_.begin(), order_.end(), 0U);
        std::ranges::stable_sort(order_, {}, [&](uint32_t node) {
            return std::pair(nodes[node].parent, weights[node]);
        });
    }

    std::span<const uint32_t> of(uint32_t parent) const {
        const auto parentOf = [this](uint32_t node) { return (*nodes_)[node].parent; };
        return {std::ranges::lower_bound(order_, parent, {}, parentOf),
                std::ranges::upper_bound(order_, parent, {}, parentOf)};
    }

  private:
    const std::vector<CallNode>* nodes_;
    std::vector<uint32_t> order_;
};

// What the lightest of the rows that are asked for weighs.
Nanoseconds leastOfTop(const std::vector<CallNode>& nodes, const std::vector<Nanoseconds>& weights,
                       const TreeLimits& limits) {
    std::vector<Nanoseconds> candidates;
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].depth < limits.depth) candidates.push_back(weights[i]);
    }
    if (limits.top == 0 || candidates.size() <= limits.top) return 0;
    const auto last = candidates.begin() + static_cast<std::ptrdiff_t>(limits.top - 1);
    std::ranges::nth_element(candidates, last, std::greater());
    return *last;
}

double shareOf(Nanoseconds part, Nanoseconds whole) {
    return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

}  // namespace

TreeView::TreeView(const CallTree& tree, const TraceClock& clock, const CodeNames& codeNames,
                   const TreeLimits& limits)
    : nodes_(&tree.nodes()), clock_(&clock), codeNames_(&codeNames) {
    const std::vector<Nanoseconds> weights = weightsOf(*nodes_);
    const std::vector<bool> counts = countsOf(*nodes_);
    const Children children(*nodes_, weights);
    const std::span<const uint32_t> roots = children.of(CallNode::kNone);
    for (const uint32_t root : roots) addTo(whole_, weights[root]);

    const Nanoseconds least =
        std::max(leastOfTop(*nodes_, weights, limits),
                 static_cast<Nanoseconds>(std::ceil(limits.least * static_cast<double>(whole_))));

    std::vector<uint32_t> waiting(roots.begin(), roots.end());
    while (!waiting.empty()) {
        const uint32_t at = waiting.back();
        waiting.pop_back();
        const CallNode& node = (*nodes_)[at];
        if (node.depth < limits.depth && weights[at] >= least && counts[at]) {
            shown_.push_back(at);
        } else if (node.calls > 0) {
            ++hidden_;
            addTo(hiddenSelf_, node.self);
        }
        const auto below = children.of(at);
        waiting.insert(waiting.end(), below.begin(), below.end());
    }
}

std::string TreeView::nameOf(const CallNode& node) const {
    return node.code == CallNode::kThread ? "thread " + shortWordText(clock_->threadId(node.thread))
                                          : eventText(node.code, *codeNames_);
}

void TreeView::print(Output& out) const {
    Table table({{"time"},
                 {"share", Align::right, 79},
                 {"self", Align::right, 78},
                 {"calls"},
                 {"cut off", Align::right, 100, false, true},
                 {"unfinished", Align::right, 102, false, true},
                 {"event", Align::left, 0, true}});
    for (const uint32_t at : shown_) {
        const CallNode& node = (*nodes_)[at];
        const bool isThread = node.code == CallNode::kThread;
        const Style style = isThread ? Style{Tone::head} : Style{Tone::driver, hueOf(node.code)};
        table.add({durationText(node.time),
                   shareText(shareOf(node.time, whole_)),
                   isThread ? "" : durationText(node.self),
                   countText(node.calls),
                   countText(node.cutOff),
                   countText(node.unfinished),
                   {std::string(kIndent * node.depth, ' ') + nameOf(node), style}});
    }
    if (hidden_ > 0) {
        constexpr Style kDim{Tone::dim};
        table.add({"",
                   "",
                   {durationText(hiddenSelf_), kDim},
                   "",
                   "",
                   "",
                   {countText(hidden_) + " more: --top 0 --depth 1000", kDim}});
    }
    table.print(out);
}

void TreeView::write(JsonStream& out) const {
    std::vector<uint32_t> places(nodes_->size());
    uint32_t place = 0;
    for (const uint32_t at : shown_) {
        const CallNode& node = (*nodes_)[at];
        places[at] = place++;
        Json entry;
        entry["parent"] =
            node.parent == CallNode::kNone ? Json(nullptr) : Json(places[node.parent]);
        if (node.code == CallNode::kThread) {
            entry["thread"] = wordText(clock_->threadId(node.thread));
        } else {
            addEvent(entry, node.code, *codeNames_);
        }
        entry["calls"] = node.calls;
        entry["cut_off"] = node.cutOff;
        entry["unfinished"] = node.unfinished;
        entry["time_ns"] = node.time;
        entry["self_ns"] = node.self;
        out.item(entry);
    }
}

}  // namespace sonaprobe::scope
