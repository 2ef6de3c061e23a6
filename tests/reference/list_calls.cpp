// Lists the calls, points and orphan ends of the raw file on standard input, one a line with tabs,
// for the comparison with the reference.

#include <cinttypes>
#include <cstdio>
#include <exception>

#include "analysis/call_tracker.h"
#include "analysis/event_traits.h"

using namespace sonaprobe;

namespace {

constexpr const char* kEnds[] = {"finished", "cut off", "unfinished"};

// The tag of a call is its number, by which its children tell their parent.
class Listing : public CallSink {
  public:
    const CallTracker* tracker = nullptr;

    uint32_t opened(const TraceRecord&, const Call&, const Call*) override { return calls_++; }

    void closed(const Call& call, const Call* parent, const Closing& closing) override {
        std::printf("call\t%" PRIu32 "\t%" PRId64 "\t%" PRIx32 "\t%" PRIu64 "\t%" PRIu64
                    "\t%" PRIu32 "\t%" PRId64 "\t%" PRId64 "\t%" PRId64 "\t%" PRIu32 "\t%" PRIu64
                    "\t%" PRIu64 "\t%s\n",
                    call.tag, parent == nullptr ? int64_t{-1} : int64_t{parent->tag}, call.code,
                    call.object, tracker->clock().threadId(call.thread), call.cpu, call.start,
                    closing.time, closing.selfOf(call), call.depth, call.startSlot, closing.slot,
                    kEnds[static_cast<size_t>(closing.how)]);
    }

    void point(const TraceRecord& record, const Moment& moment) override {
        list("point", record, moment);
    }

    void orphanEnd(const TraceRecord& record, const Moment& moment) override {
        list("orphan end", record, moment);
    }

  private:
    void list(const char* what, const TraceRecord& record, const Moment& moment) const {
        std::printf("%s\t%" PRIx32 "\t%" PRIu64 "\t%" PRIu64 "\t%" PRId64 "\t%" PRIu64 "\n", what,
                    codeOf(record.debugid), objectOf(record), record.arg5, moment.time,
                    moment.slot);
    }

    uint32_t calls_ = 0;
};

}  // namespace

int main() try {
    Listing listing;
    CallTracker tracker(listing);
    listing.tracker = &tracker;
    TraceRecord slot{};
    while (std::fread(&slot, sizeof slot, 1, stdin) == 1) tracker.take(slot);
    tracker.finish();
    std::printf("steps back\t%" PRIu64 "\ndisordered\t%" PRIu64 "\n", tracker.clock().stepsBack(),
                tracker.clock().disordered());
} catch (const std::exception& error) {
    std::fprintf(stderr, "list_calls: %s\n", error.what());
    return 1;
}
