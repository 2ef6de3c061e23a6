// Calls, statistics, the call tree and the causes of dropouts over any records: the self times of a
// thread's calls are its busy time, a tree's times are theirs, and what is told lies in the trace.
//
// An input is steps: a byte says what, more say of which record.

#include <map>
#include <vector>

#include "analysis/call_statistics.h"
#include "analysis/call_tree.h"
#include "analysis/dropout_findings.h"
#include "analysis/event_traits.h"
#include "fuzz.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

constexpr size_t kMostSlots = 2000;

// Codes that mean something to calls and causes, some that no decoder knows, and markers.
constexpr uint32_t kCodes[] = {
    kOverload,  kIoThread,  kIoCycle,   kClient,        kZeroTimeStamp, 0x05245C0C, 0x05245C10,
    0x05249850, 0x05243014, 0x01300004, kDivisorMarker, kInvalidMarker, 0x0524FFFC, 0x05240004,
};

TraceRecord nextSlot(Input& input, uint64_t& now) {
    const auto what = input.number<uint8_t>();
    TraceRecord slot{};
    if (what == 0xFF) {
        slot = input.number<TraceRecord>();
        now = slot.timestamp;
        return slot;
    }
    const auto where = input.number<uint8_t>();
    const auto step = input.number<int16_t>();
    now += static_cast<uint64_t>(int64_t{step} * 100);
    slot.timestamp = now;
    slot.debugid = kCodes[(what >> 2) % std::size(kCodes)];
    if (slot.debugid == kDivisorMarker) {
        slot.timestamp = input.number<uint8_t>();
        return slot;
    }
    if (slot.debugid != kInvalidMarker) slot.debugid |= what & 3;
    slot.arg1 = where & 3;
    slot.arg5 = 0x1C00 + (where >> 2 & 7);
    slot.cpuid = where >> 5;
    if (isServer(slot.debugid)) {
        slot.arg1 = now * input.number<uint8_t>() / 64;
        slot.arg2 = input.number<uint16_t>();
        slot.arg3 = now;
        slot.arg4 = now + input.number<uint16_t>();
    }
    return slot;
}

class Everything final : public CallSink {
  public:
    explicit Everything(GroupBy by) : statistics_(by) {}

    uint32_t opened(const TraceRecord& record, const Call& call, const Call* parent) override {
        nodes_.push_back(
            tree_.open(call, parent == nullptr ? CallNode::kNone : nodes_[parent->tag]));
        groups_.push_back(statistics_.open(record, call, true));
        return static_cast<uint32_t>(nodes_.size() - 1);
    }
    void closed(const Call& call, const Call* /*parent*/, const Closing& closing) override {
        require(closing.time >= call.start, "no call ends before it starts");
        require(closing.selfOf(call) >= 0, "calls inside take no more than the call");
        tree_.close(call, closing, nodes_[call.tag]);
        Call counted = call;
        counted.tag = groups_[call.tag];
        statistics_.close(counted, closing, true);
        self_ += closing.selfOf(call);
        ++closed_;
    }
    void point(const TraceRecord& record, const Moment& moment) override {
        statistics_.countPoint(record, moment.thread);
    }
    void orphanEnd(const TraceRecord& record, const Moment& moment) override {
        statistics_.countOrphanEnd(record, moment.thread);
    }

    void check(GroupBy by) {
        Wide self = 0;
        Wide busy = 0;
        for (const CallGroup& group : statistics_.groups()) {
            self += group.self + group.cutOffSelf + group.unfinishedSelf;
            if (group.busy) busy += *group.busy;
        }
        require(self == self_, "the groups' self times are those of all calls");
        if (by == GroupBy::thread) require(busy == self_, "a thread is busy for its self times");
        Wide roots = 0;
        Wide selfOfTree = 0;
        uint64_t calls = 0;
        for (const CallNode& node : tree_.nodes()) {
            if (node.parent == CallNode::kNone) roots += node.time;
            selfOfTree += node.self;
            calls += node.calls;
        }
        require(calls == closed_, "each call is in the tree");
        require(selfOfTree == self_, "the tree's self times are those of all calls");
        require(roots == self_, "outermost calls take as long as all that is in them");
    }

  private:
    CallStatistics statistics_;
    CallTree tree_;
    std::vector<uint32_t> nodes_;  // by the tag of a call
    std::vector<uint32_t> groups_;
    Wide self_ = 0;
    uint64_t closed_ = 0;
};

void checkCauses(const std::vector<TraceRecord>& slots) {
    IoObserver observer;
    for (const TraceRecord& slot : slots) observer.take(slot);
    const IoAnswer answer = judgeIo(observer.finish());
    size_t told = 0;
    for (const DropoutFinding& finding : findingsOf(answer.dropouts))
        told += finding.dropouts.size();
    require(told == answer.dropouts.size(), "each dropout is in one finding");
    for (const Dropout& dropout : answer.dropouts) {
        for (const uint64_t slot : dropout.verdict.evidence) {
            require(slot < slots.size(), "evidence is in the trace");
        }
    }
    for (const IoSummary& summary : summariesOf(answer.threads)) {
        require(summary.healthy + summary.nearMisses <= summary.cycles, "cycles are counted once");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto by = static_cast<GroupBy>(input.number<uint8_t>() % 6);
    uint64_t now = input.number<uint32_t>();
    std::vector<TraceRecord> slots;
    while (!input.atEnd() && slots.size() < kMostSlots) slots.push_back(nextSlot(input, now));

    Everything everything(by);
    CallTracker tracker(everything);
    for (const TraceRecord& slot : slots) tracker.take(slot);
    tracker.finish();
    // Times that saturate add up to nothing.
    if (tracker.clock().latest() < Nanoseconds{1} << 50) everything.check(by);
    checkCauses(slots);
    return 0;
}
