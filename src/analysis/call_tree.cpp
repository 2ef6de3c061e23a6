// Merges calls by their paths.

#include "analysis/call_tree.h"

#include <algorithm>

namespace sonaprobe {

void CallNode::add(const CallNode& other) {
    calls += other.calls;
    cutOff += other.cutOff;
    unfinished += other.unfinished;
    addTo(time, other.time);
    addTo(self, other.self);
}

uint32_t CallTree::nodeOf(uint32_t parent, uint32_t code, uint32_t thread) {
    const auto [found, isNew] =
        nodeByKey_.try_emplace(Key{parent, code, thread}, static_cast<uint32_t>(nodes_.size()));
    if (isNew) {
        const uint32_t depth = parent == CallNode::kNone ? 0 : nodes_[parent].depth + 1;
        nodes_.push_back({.parent = parent, .code = code, .thread = thread, .depth = depth});
    }
    return found->second;
}

uint32_t CallTree::open(const Call& call, uint32_t parent) {
    if (threads_ == Threads::merged) return nodeOf(parent, call.code);
    if (parent == CallNode::kNone) parent = nodeOf(parent, CallNode::kThread, call.thread);
    return nodeOf(parent, call.code, call.thread);
}

void CallTree::close(const Call& call, const Closing& closing, uint32_t node) {
    const CallNode one{.calls = 1,
                       .cutOff = closing.how == CallEnd::cutOff ? 1U : 0U,
                       .unfinished = closing.how == CallEnd::unfinished ? 1U : 0U,
                       .time = closing.lengthOf(call),
                       .self = closing.selfOf(call)};
    nodes_[node].add(one);
    if (threads_ == Threads::apart && call.depth == 0) {
        CallNode& thread = nodes_[nodes_[node].parent];
        thread.add(one);
        thread.self = 0;
    }
}

CallTree CallTree::calleesOf(std::span<const uint32_t> codes) const {
    CallTree callees;
    std::vector<uint32_t> counterparts(nodes_.size(), CallNode::kNone);
    for (size_t i = 0; i < nodes_.size(); ++i) {
        const CallNode& node = nodes_[i];
        const uint32_t parent =
            node.parent == CallNode::kNone ? CallNode::kNone : counterparts[node.parent];
        if (parent == CallNode::kNone && !std::ranges::count(codes, node.code)) continue;
        counterparts[i] = callees.nodeOf(parent, node.code);
        callees.nodes_[counterparts[i]].add(node);
    }
    return callees;
}

CallTree CallTree::callersOf(std::span<const uint32_t> codes, uint32_t depth) const {
    CallTree callers;
    std::vector<bool> inside(nodes_.size());  // one of the codes, or called by one
    for (size_t i = 0; i < nodes_.size(); ++i) {
        const CallNode& node = nodes_[i];
        const bool called = node.parent != CallNode::kNone && inside[node.parent];
        const bool asked = std::ranges::count(codes, node.code) > 0;
        inside[i] = called || asked;
        if (called || !asked) continue;
        uint32_t at = callers.nodeOf(CallNode::kNone, node.code);
        callers.nodes_[at].add(node);
        uint32_t caller = node.parent;
        for (uint32_t level = 0; level < depth && caller != CallNode::kNone; ++level) {
            at = callers.nodeOf(at, nodes_[caller].code);
            callers.nodes_[at].add(node);
            caller = nodes_[caller].parent;
        }
    }
    return callers;
}

}  // namespace sonaprobe
