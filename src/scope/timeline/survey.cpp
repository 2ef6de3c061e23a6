// Reads a trace for what must be known before it is packed.

#include "scope/timeline/survey.h"

#include <bit>

#include "analysis/io_cycles.h"
#include "scope/failure.h"
#include "scope/records.h"
#include "scope/units.h"

namespace sonaprobe::scope::timeline {

namespace {

// Marks the slots that are shown: what is selected, and with one end of a call the other.
class ShownSlots final : public CallSink {
  public:
    explicit ShownSlots(std::vector<bool>& shown) : shown_(&shown) {}

    void show(uint64_t slot) {
        if (slot >= shown_->size()) shown_->resize(slot + 1);
        (*shown_)[slot] = true;
    }
    void follow(const TraceRecord& slot) { tracker_.take(slot); }
    void finish() {
        tracker_.finish();
        shown_->resize(tracker_.slots() + 1);
    }

  private:
    uint32_t opened(const TraceRecord&, const Call&, const Call*) override { return 0; }
    void closed(const Call& call, const Call*, const Closing& closing) override {
        const bool endShown = closing.how == CallEnd::finished && isShown(closing.slot);
        if (!endShown && !isShown(call.startSlot)) return;
        show(call.startSlot);
        show(closing.slot);
    }
    void point(const TraceRecord&, const Moment&) override {}
    void orphanEnd(const TraceRecord&, const Moment&) override {}
    bool isShown(uint64_t slot) const { return slot < shown_->size() && (*shown_)[slot]; }

    std::vector<bool>* shown_;
    CallTracker tracker_{*this};
};

}  // namespace

Survey survey(const TraceOptions& trace, const Selection& selection) {
    Survey survey;
    Input input(trace);
    TraceClock clock;
    ShownSlots shown(survey.shown);
    const bool all = selection.isAll();
    std::vector<Nanoseconds> latestOf;  // by thread
    std::array<uint64_t, 65> begun{};   // by how many bits a time differs in from the one before
    const auto takeRecord = [&](const TraceRecord& record, uint64_t slot) {
        const auto [time, thread, restarted, latestBefore] = clock.read(record);
        if (!all && !selection.contains(record, slot, time)) return;
        if (!all) shown.show(slot);
        const Nanoseconds at = bounded(time);
        if (survey.records == 0) survey.begin = survey.end = at;
        survey.begin = std::min(survey.begin, at);
        survey.end = std::max(survey.end, at);
        ++survey.records;
        if (thread >= latestOf.size()) latestOf.resize(thread + 1, -1);
        ++begun[static_cast<size_t>(std::bit_width(static_cast<uint64_t>(at ^ latestOf[thread])))];
        latestOf[thread] = at;
    };
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        uint64_t number = input.firstSlot();
        for (const TraceRecord& slot : slots) {
            const SlotKind kind = kindOf(slot);
            if (kind == SlotKind::divisor) clock.takeDivisor(slot.timestamp);
            if (kind == SlotKind::record) takeRecord(slot, number);
            if (!all) shown.follow(slot);
            ++number;
        }
    }
    warnOfDamage(input);
    if (survey.records == 0) {
        throw Failure{input.source().name() + ": no record " + (all ? "in it" : "is selected") +
                      "; no page is written. The trace ends at " + timeText(clock.latest())};
    }
    if (!all) shown.finish();
    uint64_t longer = 0;
    for (size_t bits = survey.stretches.size(); bits-- > 0;) {
        longer += begun[bits + 1];
        survey.stretches[bits] = longer;
    }
    return survey;
}

}  // namespace sonaprobe::scope::timeline
