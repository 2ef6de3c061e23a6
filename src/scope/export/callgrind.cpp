// A profile as callgrind writes it. Each thread is a function that calls its outermost calls, or
// these would lose their time; a call inside another of its event is a function of its own
// (NAME'2), so that no time counts twice.

#include <map>

#include "analysis/event_names.h"
#include "scope/export/tree_format.h"

namespace sonaprobe::scope {

namespace {

// An event at a level of its recursion, or a thread.
struct Function {
    uint32_t code = 0;
    uint32_t levelOrThread = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the result's 0 for a pointer.
    auto operator<=>(const Function&) const = default;
};

struct Cost {
    uint64_t calls = 0;
    Nanoseconds time = 0;

    void add(uint64_t moreCalls, Nanoseconds more) {
        calls += moreCalls;
        addTo(time, more);
    }
};

struct Profile {
    Nanoseconds self = 0;
    std::map<Function, Cost> callees{};
};

class Callgrind final : public TreeFormat {
  public:
    Callgrind(const FormatOptions& options, TextOutput& out)
        : TreeFormat(options, out), file_(options.file) {}

    void finish(const TraceClock& clock) override {
        const std::vector<Function> functions = functionsOfNodes();
        // With what they call.
        std::vector<Nanoseconds> inclusive(nodes().size());
        std::map<Function, Profile> profiles;
        std::map<Function, std::string> names;
        Nanoseconds whole = 0;
        for (size_t i = nodes().size(); i-- > 0;) {
            const CallNode& node = nodes()[i];
            addTo(inclusive[i], node.self);
            addTo(whole, node.self);
            Profile& profile = profiles[functions[i]];
            addTo(profile.self, node.self);
            names.try_emplace(functions[i], functionName(node, functions[i], clock));
            if (node.parent == CallNode::kNone) continue;
            Nanoseconds& above = inclusive[node.parent];
            addTo(above, inclusive[i]);
            profiles[functions[node.parent]].callees[functions[i]].add(node.calls, inclusive[i]);
        }
        put(profiles, names, whole);
    }

  private:
    std::vector<Function> functionsOfNodes() const {
        std::vector<Function> functions;
        for (const CallNode& node : nodes()) {
            if (node.code == CallNode::kThread) {
                functions.push_back({node.code, node.thread});
                continue;
            }
            uint32_t level = 1;
            for (uint32_t at = node.parent; at != CallNode::kNone; at = nodes()[at].parent) {
                if (nodes()[at].code == node.code) ++level;
            }
            functions.push_back({node.code, level});
        }
        return functions;
    }

    std::string functionName(const CallNode& node, const Function& function,
                             const TraceClock& clock) const {
        const bool recurs = node.code != CallNode::kThread && function.levelOrThread > 1;
        return nameOf(node, clock) + (recurs ? "'" + std::to_string(function.levelOrThread) : "");
    }

    // Drivers take the place of source files, and all is in their line 0.
    static std::string sourceOf(const Function& function) {
        if (function.code == CallNode::kThread) return "threads";
        return std::string(driverOf(function.code));
    }

    void put(const std::map<Function, Profile>& profiles,
             const std::map<Function, std::string>& names, Nanoseconds whole) {
        out().put("# callgrind format\nversion: 1\ncreator: sonascope\ncmd: " + file_ +
                  "\npositions: line\nevent: ns : nanoseconds\nevents: ns\nsummary: " +
                  std::to_string(whole) + "\n");
        for (const auto& [function, profile] : profiles) {
            out().put("\nfl=" + sourceOf(function) + "\nfn=" + names.at(function) + "\n0 " +
                      std::to_string(profile.self) + "\n");
            for (const auto& [callee, cost] : profile.callees) {
                out().put("cfi=" + sourceOf(callee) + "\ncfn=" + names.at(callee) + "\ncalls=" +
                          std::to_string(cost.calls) + " 0\n0 " + std::to_string(cost.time) + "\n");
            }
        }
    }

    std::string file_;
};

}  // namespace

std::unique_ptr<Format> makeCallgrind(const FormatOptions& options, TextOutput& out) {
    return std::make_unique<Callgrind>(options, out);
}

}  // namespace sonaprobe::scope
