// Folded stacks: a line for each path of calls, with the time spent at its end.

#include "analysis/event_traits.h"
#include "scope/export/tree_format.h"

namespace sonaprobe::scope {

namespace {

// What separates frames must not stand in one.
std::string frameOf(std::string name) {
    for (size_t at = name.find(';'); at != std::string::npos; at = name.find(';', at)) {
        name.replace(at, 1, "\\x3b");
    }
    return name;
}

class Folded final : public TreeFormat {
  public:
    Folded(const FormatOptions& options, TextOutput& out)
        : TreeFormat(options, out), waiting_(options.waiting) {}

    void finish(const TraceClock& clock) override {
        std::vector<std::string> frames;
        for (const CallNode& node : nodes()) frames.push_back(frameOf(nameOf(node, clock)));
        for (uint32_t i = 0; i < nodes().size(); ++i) {
            const CallNode& node = nodes()[i];
            if (node.self <= 0) continue;
            // An I/O thread's call without its cycles is time in which it waits for the next.
            const bool waits = node.code == kIoThread;
            if (waits && waiting_ == Waiting::omit) continue;
            putPath(frames, i);
            if (waits) out().put(";waiting");
            out().put(" " + std::to_string(node.self) + "\n");
        }
    }

  private:
    void putPath(const std::vector<std::string>& frames, uint32_t node) {
        path_.clear();
        for (; node != CallNode::kNone; node = nodes()[node].parent) path_.push_back(node);
        for (auto at = path_.rbegin(); at != path_.rend(); ++at) {
            if (at != path_.rbegin()) out().put(";");
            out().put(frames[*at]);
        }
    }

    Waiting waiting_;
    std::vector<uint32_t> path_;  // nodes, the innermost first
};

}  // namespace

std::unique_ptr<Format> makeFolded(const FormatOptions& options, TextOutput& out) {
    return std::make_unique<Folded>(options, out);
}

}  // namespace sonaprobe::scope
